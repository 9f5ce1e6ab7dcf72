# The two commands for everybody: make run, make test. The others are for daily work.
# Everything is built in build/<preset>; the released programs lie in build/release/bin.

JOBS ?= $(shell nproc)
CTEST = ctest --output-on-failure --no-tests=error

.PHONY: all package install build run test asan lint format bench fuzz packages clean

all: build

packages:
	@Tools/dev/install-packages

build: packages
	cmake --preset release
	cmake --build --preset release -j $(JOBS)

run: build
	Tools/dev/run-velmora build/release/bin

test: build
	$(CTEST) --test-dir build/release

asan: packages
	cmake --preset asan
	cmake --build --preset asan -j $(JOBS) --target unit-tests
	$(CTEST) --test-dir build/asan -L unit

lint: packages
	Tools/dev/lint

format: packages
	Tools/dev/format --write

bench: packages
	Tools/dev/bench

fuzz: packages
	Tools/dev/fuzz

# A .deb and a relocatable tarball, in build/packages.
package: packages
	JOBS=$(JOBS) Tools/release/package

# As in make install PREFIX=/usr DESTDIR=/tmp/root.
PREFIX ?= /usr/local
install: build
	DESTDIR=$(DESTDIR) cmake --install build/release --prefix $(PREFIX) --component application
	DESTDIR=$(DESTDIR) cmake --install build/release --prefix $(PREFIX) --component tools

clean:
	rm -rf build
