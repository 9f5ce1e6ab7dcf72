# Hardening as Debian builds its packages (dpkg-buildflags, hardening=+all), in every build, so that the tests run what
# is shipped. Tests/ToolsTests/HardeningTests.py reads the results.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX) # Without this call CMake links no position-independent programs.

foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection) # The last one on x86 only.
  string(MAKE_C_IDENTIFIER "VELMORA_HAS${flag}" isKnown)
  check_cxx_compiler_flag(${flag} ${isKnown})
  if(${isKnown})
    add_compile_options(${flag})
  endif()
endforeach()
add_compile_options(-Wformat -Werror=format-security)
add_link_options(LINKER:-z,relro LINKER:-z,now)

# Checks of buffer sizes need an optimising build; sanitizers have their own.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()
