# The two commands:
#   make test   set up, build, run every test, then again under ASan+UBSan,
#               then the test binaries under ThreadSanitizer
#   make run    set up, build, run the command-line demo
JOBS ?= $(shell nproc)
BUILD := build
SANITIZE_BUILD := build-sanitize
TSAN_BUILD := build-tsan

.PHONY: test run setup build build-sanitize build-tsan

setup:
	@scripts/setup.sh

build: setup
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQXUTIL_BENCHMARKS=ON
	cmake --build $(BUILD) -j$(JOBS)

build-sanitize: setup
	CC=clang CXX=clang++ cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DQXUTIL_SANITIZE=ON -DQXUTIL_FUZZ=ON
	cmake --build $(SANITIZE_BUILD) -j$(JOBS)

build-tsan: setup
	CC=clang CXX=clang++ cmake -S . -B $(TSAN_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQXUTIL_TSAN=ON
	cmake --build $(TSAN_BUILD) -j$(JOBS)

test: build build-sanitize build-tsan
	cd $(BUILD) && ctest --output-on-failure -j$(JOBS)
	cd $(SANITIZE_BUILD) && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --output-on-failure -j$(JOBS)
	cd $(TSAN_BUILD) && TSAN_OPTIONS=halt_on_error=1 ctest --output-on-failure -j$(JOBS)

run: build
	scripts/demo.sh $(BUILD)/tools/qxutil/qxutil
