# The two commands:
#   make test   set up, build, run every test, then again under ASan+UBSan
#   make run    set up, build, run the command-line demo
JOBS ?= $(shell nproc)
BUILD := build
SANITIZE_BUILD := build-sanitize

.PHONY: test run setup build build-sanitize

setup:
	@scripts/setup.sh

build: setup
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQXUTIL_BENCHMARKS=ON
	cmake --build $(BUILD) -j$(JOBS)

build-sanitize: setup
	CC=clang CXX=clang++ cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DQXUTIL_SANITIZE=ON -DQXUTIL_FUZZ=ON
	cmake --build $(SANITIZE_BUILD) -j$(JOBS)

test: build build-sanitize
	cd $(BUILD) && ctest --output-on-failure -j$(JOBS)
	cd $(SANITIZE_BUILD) && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --output-on-failure -j$(JOBS)

run: build
	scripts/demo.sh $(BUILD)/tools/qxutil/qxutil
