// Preloaded into a program, moves its clocks. By how many milliseconds stands as 64-bit numbers in the file that
// $VELMORA_CLOCK_SHIFT names, and may change at any time: first the monotonic clock, then, if the file has a second
// number, the wall clock.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

constexpr std::int64_t second = 1'000'000'000; // Nanoseconds.

const volatile std::int64_t *openShift()
{
    const char *path = std::getenv("VELMORA_CLOCK_SHIFT");
    const int file = path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return nullptr;
    // The page of a shorter file ends with zeros.
    void *page = mmap(nullptr, 2 * sizeof(std::int64_t), PROT_READ, MAP_SHARED, file, 0);
    close(file);
    return page == MAP_FAILED ? nullptr : static_cast<const volatile std::int64_t *>(page);
}

// The system's function of that name.
template<typename Function>
Function original(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// By how many milliseconds the clock is moved.
std::int64_t shiftOf(clockid_t clock)
{
    static const volatile std::int64_t *shift = openShift();
    if (shift == nullptr)
        return 0;
    if (clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_COARSE)
        return shift[0];
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE ? shift[1] : 0;
}

} // namespace

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's names are reserved ones.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    static const auto system = original<int (*)(clockid_t, timespec *)>("clock_gettime");
    const int result = system(clock, time);
    if (result != 0)
        return result;
    const std::int64_t moved = shiftOf(clock);
    const std::int64_t nanoseconds = time->tv_nsec + moved % 1000 * 1'000'000 + second;
    time->tv_sec += moved / 1000 + nanoseconds / second - 1;
    time->tv_nsec = nanoseconds % second;
    return result;
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): as above.
extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval *time, void * /*zone*/) noexcept
{
    timespec now = {};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    *time = {.tv_sec = now.tv_sec, .tv_usec = now.tv_nsec / 1000};
    return result;
}
