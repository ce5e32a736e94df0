# Front door to the build: `make demo` and `make test` are all a newcomer needs. Everything is also
# there without this file, through plain CMake (see README.md).

BUILD ?= build
JOBS ?= 2
CMAKE_FLAGS ?=

build_packages := g++ make cmake ninja-build libfmt-dev libcli11-dev nlohmann-json3-dev scdoc
# The browser is for the page of `kelda report`, dot and vim for what is written for them.
test_packages := libgtest-dev libgmock-dev librapidcheck-dev python3-jsonschema zsh bash-completion \
    chromium chromium-driver python3-selenium graphviz vim
# CPack asks `file` what is a program; man-db and pkgconf are for the checks of what is installed.
package_packages := dpkg-dev file man-db pkgconf
bench_packages := libbenchmark-dev
ci_packages := clang clang-format clang-tidy libclang-rt-14-dev doxygen $(package_packages)

corpus := ../shared/corpus/openconfig
# Three rounds of everything; give other options of Google Benchmark instead.
BENCH_FLAGS ?= --benchmark_repetitions=3 --benchmark_report_aggregates_only=true

.PHONY: help setup setup-ci demo test bench build reference package coverage format check-format tidy clean

help:
	@echo "make demo          build, and show an agent of the example device"
	@echo "make test          build and run every test"
	@echo "make bench         build and run the benchmarks"
	@echo "make reference     make web pages of the public headers"
	@echo "make package       make Debian packages, in $(BUILD)-package"
	@echo "make coverage      tell which lines the tests run"
	@echo "make setup         install what is missing (the others call it themselves)"
	@echo "make format        put all sources in their format"
	@echo "make check-format  tell which sources are not in their format"
	@echo "make tidy          run clang-tidy on the library"
	@echo "make clean         remove $(BUILD) and its companions"

setup:
	@packaging/install-packages $(build_packages) $(test_packages)

setup-ci: setup
	@packaging/install-packages $(bench_packages) $(ci_packages)

build: setup
	cmake -S . -B $(BUILD) -G Ninja -DKELDA_WERROR=ON -DKELDA_TESTS=ON $(CMAKE_FLAGS)
	cmake --build $(BUILD) -j $(JOBS)

demo:
	@packaging/install-packages $(build_packages)
	cmake -S . -B $(BUILD)-demo -G Ninja -DKELDA_TESTS=OFF >/dev/null
	cmake --build $(BUILD)-demo -j $(JOBS)
	packaging/demo $(BUILD)-demo/tools/kelda $(corpus)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

bench:
	@packaging/install-packages $(build_packages) $(bench_packages)
	cmake -S . -B $(BUILD)-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DKELDA_BENCH=ON \
	    -DKELDA_TESTS=OFF -DKELDA_TOOLS=OFF >/dev/null
	cmake --build $(BUILD)-bench -j $(JOBS)
	$(BUILD)-bench/bench/kelda_bench $(BENCH_FLAGS)

reference:
	@packaging/install-packages $(build_packages) doxygen
	cmake -S . -B $(BUILD)-reference -G Ninja -DKELDA_TESTS=OFF -DKELDA_TOOLS=OFF >/dev/null
	cmake --build $(BUILD)-reference --target reference

package:
	@packaging/install-packages $(build_packages) $(package_packages)
	JOBS=$(JOBS) packaging/build-packages $(BUILD)-package

coverage:
	@packaging/install-packages $(build_packages) $(test_packages) gcovr
	cmake -S . -B $(BUILD)-coverage -G Ninja -DKELDA_COVERAGE=ON -DKELDA_TESTS=ON \
	    -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=Debug >/dev/null
	cmake --build $(BUILD)-coverage -j $(JOBS)
	ctest --test-dir $(BUILD)-coverage -j $(JOBS) >/dev/null
	gcovr --root . --filter framework/ --filter KeldaBase/ --filter include/ --filter tools/ \
	    --gcov-ignore-parse-errors -j $(JOBS) $(BUILD)-coverage

sources = $(shell git ls-files '*.h' '*.cpp')

format:
	@clang-format -i $(sources)

check-format:
	@clang-format --dry-run -Werror $(sources)

tidy:
	cmake -S . -B $(BUILD)-tidy -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DKELDA_TESTS=OFF >/dev/null
	run-clang-tidy -quiet -j $(JOBS) $(TIDY_FLAGS) -p $(BUILD)-tidy '^$(CURDIR)/(framework|KeldaBase)/.*\.cpp$$'

clean:
	rm -rf $(BUILD) $(BUILD)-*
