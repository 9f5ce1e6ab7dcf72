# The two commands for everybody: make run, make test. "make help" lists the others.
# Everything is built in build/<preset>; the released programs lie in build/release/bin.

JOBS ?= $(shell nproc)
KILLS ?= 1000

.PHONY: all help packages build run test asan checks lint format bench fuzz faults soak rehearsal package install clean

all: build

help: ## This list
	@sed -n 's/^\([a-z]*\):.*## \(.*\)/  make \1\t\2/p' Makefile | expand -t 20

packages: ## Install the Debian packages that are missing, as root or through sudo
	@Tools/dev/install-packages

build: packages ## Build everything: the programs and all tests
	cmake --preset release
	cmake --build --preset release -j $(JOBS)

run: packages ## Build the program and start it; without a display, show it at work and keep pictures
	cmake --preset release
	cmake --build --preset program -j $(JOBS)
	Tools/dev/run-velmora build/release/bin

rehearsal: packages ## Draw every view in every state, made from fakes, into build/rehearsal
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target velmora-rehearsal
	build/release/bin/velmora-rehearsal --shoot build/rehearsal
	@echo "Every view is in build/rehearsal; build/release/bin/velmora-rehearsal --scene NAME shows one live."

test: build ## Build everything and run all tests
	ctest --preset release -j $(JOBS)

asan: packages ## Run the unit tests under the address and undefined-behaviour sanitizers
	cmake --preset asan
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)

checks: packages ## Run the checks of the sources; nothing is built
	cmake --preset release
	ctest --preset checks -j $(JOBS)

lint: packages ## Read all sources with clang-tidy, qmllint and the linters of the scripts
	Tools/dev/lint

format: packages ## Format the C++ sources
	Tools/dev/format --write

bench: packages ## Measure the engine, and what it costs to let the program run all day
	Tools/dev/bench
	cmake --preset release
	cmake --build --preset program -j $(JOBS)
	Tools/dev/measure-day build/release/bin/velmora

fuzz: packages ## Run each fuzzer for a minute
	Tools/dev/fuzz

faults: packages ## Kill, flood, cut off and lie to the program, and look at what is lost; takes half an hour
	cmake --preset release
	cmake --build --preset program -j $(JOBS)
	cmake --build build/release -j $(JOBS) --target VelmoraLinuxTests velmora-shifted-clock
	Tests/Faults/run build/release $(KILLS)

soak: packages ## Copy a hundred thousand times and look whether anything grows; takes about forty minutes
	cmake --preset release
	cmake --build --preset program -j $(JOBS)
	Tests/Faults/soak.py build/release/bin/velmora

package: packages ## Make a .deb and a self-contained tarball, in build/packages
	JOBS=$(JOBS) Tools/release/package

# As in make install PREFIX=/usr DESTDIR=/tmp/root.
PREFIX ?= /usr/local
install: packages ## Install what "make run" builds under PREFIX, below DESTDIR
	cmake --preset release
	cmake --build --preset program -j $(JOBS)
	DESTDIR=$(DESTDIR) cmake --install build/release --prefix $(PREFIX) --component application
	DESTDIR=$(DESTDIR) cmake --install build/release --prefix $(PREFIX) --component tools

clean: ## Remove all builds
	rm -rf build
