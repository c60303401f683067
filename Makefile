# The commands of the project. Each sets up what it needs; none needs another to have run before.

JOBS         ?= $(shell nproc)
FUZZ_SECONDS ?= 20
SOAK_SECONDS ?= 60
COVERAGE     ?= 95
PREFIX       ?= /usr/local
LINTED       ?= Common|Libs|host|json|memory|module|tools/tovrin

.PHONY: help setup setup-abi setup-bench setup-coverage setup-fuzz setup-lint abi abi-record run test soak bench asan tsan coverage fuzz format lint install package clean

help:
	@echo "make run      build the reference host and run it over the example rules"
	@echo "make test     build and run every test"
	@echo "make asan     every test under AddressSanitizer and UndefinedBehaviorSanitizer"
	@echo "make tsan     every test under ThreadSanitizer"
	@echo "make coverage what the tests execute, by folder; each at least COVERAGE=$(COVERAGE) % of its lines"
	@echo "make fuzz     every fuzz target for FUZZ_SECONDS=$(FUZZ_SECONDS) each"
	@echo "make soak     eight threads at work for SOAK_SECONDS=$(SOAK_SECONDS), lists changing under them"
	@echo "make bench    every benchmark; make setup-bench installs the peers that it measures beside"
	@echo "make abi      compare the binary interface with the one that make abi-record wrote down"
	@echo "make format   lay out all sources"
	@echo "make lint     clang-tidy over the sources of the library and of tovrin; LINTED=Libs for some"
	@echo "make install  install below PREFIX=$(PREFIX)"
	@echo "make package  a .deb and a .tar.gz in build/package/"
	@echo "make clean    remove build/"

setup:
	@./cmake/setup.sh

setup-abi setup-bench setup-coverage setup-fuzz setup-lint: setup-%:
	@./cmake/setup.sh $*

# A configured build folder; ninja itself configures again when a CMake file changes.
build/%/build.ninja: | setup
	cmake --preset $*

run: setup build/release/build.ninja
	@cmake --build build/release --target tovrin tessarin -- --quiet
	@build/release/bin/tovrin run examples/gateway.rules examples/requests.txt

test: setup build/release/build.ninja
	cmake --build build/release -j $(JOBS)
	ctest --test-dir build/release -j $(JOBS) --output-on-failure

asan tsan: %: setup build/%/build.ninja
	cmake --build build/$* -j $(JOBS)
	ctest --test-dir build/$* -j $(JOBS) --output-on-failure

soak: setup build/release/build.ninja
	cmake --build build/release -j $(JOBS) --target tovrin_soak
	build/release/bin/tovrin_soak $(SOAK_SECONDS)

# What counts the lines takes small blocks of memory from the module's host, which this test forbids.
coverage: UNCOUNTED = --exclude-regex 'ModuleMemory.TakesSlabsAndLargeBlocks'
coverage: setup setup-coverage build/coverage/build.ninja
	cmake --build build/coverage -j $(JOBS)
	find build/coverage -name '*.gcda' -delete
	ctest --test-dir build/coverage -j $(JOBS) --output-on-failure $(UNCOUNTED)
	@./cmake/coverage.sh build/coverage $(COVERAGE)

bench: setup build/bench/build.ninja
	cmake --build build/bench -j $(JOBS)
	@set -e; for program in build/bench/bench/*_bench; do $$program $(BENCH_FLAGS); done

fuzz: setup-fuzz build/fuzz/build.ninja
	cmake --build build/fuzz -j $(JOBS) --target fuzz_programs
	@./cmake/fuzz.sh build/fuzz $(FUZZ_SECONDS)

# The interfaces as a debugger sees them, beside what the tree has recorded of them.
abi: setup setup-abi
	@mkdir -p build
	cmake/abi.sh . build/interfaces.abi
	abidiff tests/host/interfaces.abi build/interfaces.abi

abi-record: setup setup-abi
	cmake/abi.sh . tests/host/interfaces.abi

format: setup-lint
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

lint: setup-lint build/lint/build.ninja
	git ls-files '*.cpp' | grep -E '^($(LINTED))/' | xargs -P $(JOBS) -n 1 clang-tidy -p build/lint --quiet

install: setup build/release/build.ninja
	cmake --build build/release -j $(JOBS) --target tovrin tessarin
	cmake --install build/release --prefix $(PREFIX)

package: setup build/release/build.ninja
	cmake --build build/release -j $(JOBS) --target tovrin tessarin
	cpack --config build/release/CPackConfig.cmake -B build/package

clean:
	rm -rf build
