# make run [JOB=path/to/job.omb]  build and start the program on a job
# make test                       build and run the whole test suite
# make test-sanitize              the unit tests again, built with ASan and UBSan
# make bench                      build and run the benchmarks
# make install [PREFIX=/usr/local] [DESTDIR=…]  build and install the program
# make package                    build the Debian package (build/gombrel_*.deb)
JOB ?= examples/silicon/si.omb
PREFIX ?= /usr/local
BUILD ?= build
JOBS ?= $(shell nproc)
WERROR ?= $(if $(CI),ON,OFF)
CMAKE_FLAGS ?=

.PHONY: all deps configure build run test test-sanitize bench install package clean

all: build

deps:
	@tools/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -DZELV_WERROR=$(WERROR) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# The program and the stand-in reduction code only, not the tests. The job path
# reaches the script through the environment, so that no quote or blank in it
# is read by the shell.
run: export JOB := $(JOB)
run: configure
	@cmake --build $(BUILD) -j $(JOBS) --target gombrel ombrel
	@tools/run-gombrel "$(BUILD)" "$$JOB"

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS) --timeout 600

test-sanitize: deps
	@cmake -S . -B build-sanitize -DZELV_SANITIZE=ON -DZELV_BENCH=OFF -DZELV_WERROR=$(WERROR) \
	  -DCMAKE_BUILD_TYPE=Debug $(CMAKE_FLAGS) >/dev/null
	@cmake --build build-sanitize -j $(JOBS)
	@cd build-sanitize && ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --output-on-failure -j $(JOBS) --timeout 900 -LE nosanitize

bench: build
	@tools/run-bench $(BUILD)

# DESTDIR, when set, reaches cmake --install through the environment.
install: configure
	@cmake --build $(BUILD) -j $(JOBS) --target gombrel ombrel package_files
	@cmake --install $(BUILD) --prefix "$(PREFIX)"

package: build
	@cd $(BUILD) && cpack -G DEB

clean:
	rm -rf build build-sanitize
