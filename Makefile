# Front door to the build: `make demo` and `make test` are all a newcomer needs. Everything is also
# there without this file, through plain CMake (see README.md).

BUILD ?= build
JOBS ?= 2
CMAKE_FLAGS ?=

build_packages := g++ make cmake ninja-build libfmt-dev libcli11-dev nlohmann-json3-dev
test_packages := libgtest-dev libgmock-dev librapidcheck-dev
bench_packages := libbenchmark-dev
ci_packages := clang clang-format clang-tidy libclang-rt-14-dev gcovr

corpus := ../shared/corpus/openconfig
# Three rounds of everything; give other options of Google Benchmark instead.
BENCH_FLAGS ?= --benchmark_repetitions=3 --benchmark_report_aggregates_only=true

.PHONY: help setup setup-ci demo test bench build format check-format tidy clean

help:
	@echo "make demo          build, and show an agent of the example device"
	@echo "make test          build and run every test"
	@echo "make bench         build and run the benchmarks"
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

sources = $(shell git ls-files '*.h' '*.cpp')

format:
	clang-format -i $(sources)

check-format:
	clang-format --dry-run -Werror $(sources)

tidy:
	cmake -S . -B $(BUILD)-tidy -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DKELDA_TESTS=OFF >/dev/null
	run-clang-tidy -quiet -j $(JOBS) -p $(BUILD)-tidy '^$(CURDIR)/(framework|KeldaBase)/.*\.cpp$$'

clean:
	rm -rf $(BUILD) $(BUILD)-*
