# Wraps CMake. Every target installs what is missing, configures and builds.
BUILD      ?= build
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?=
export QT_QPA_PLATFORM ?= offscreen

.PHONY: all deps configure build test bench demo install test-asan test-tsan clean

all: build

deps:
	@./scripts/install-deps.sh

$(BUILD)/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_ARGS)

configure: $(BUILD)/CMakeCache.txt

build: deps configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS) -LE bench

bench: build
	./scripts/run-bench.sh $(BUILD)

demo: build
	./scripts/demo.sh $(BUILD)

install: build
	cmake --install $(BUILD) --prefix $(PREFIX)

# The same suite built with AddressSanitizer and UndefinedBehaviorSanitizer.
test-asan: deps
	cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DKABROWSER_BUILD_BENCH=OFF \
	  "-DKABROWSER_SANITIZE=address;undefined"
	cmake --build build-asan -j $(JOBS)
	cd build-asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp:print_suppressions=0 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --output-on-failure -j $(JOBS) -LE bench

# The threaded tests (a "// ctest-label: threads" line) built with
# ThreadSanitizer, with the canary that proves the suppressions still let
# real races through. Only those targets are built. Reports go to log files;
# tests/tsan/tsanreports.sh fails the run on every one that touches our code.
TSAN_TARGETS = tsan_canary $(basename $(notdir $(shell grep -rl --include='tst_*.cpp' \
                 '^// ctest-label: threads' tests)))
TSAN_LOGS = $(CURDIR)/build-tsan/tsan-reports
test-tsan: deps
	cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DKABROWSER_BUILD_BENCH=OFF \
	  -DKABROWSER_SANITIZE=thread
	cmake --build build-tsan -j $(JOBS) --target $(TSAN_TARGETS)
	rm -rf $(TSAN_LOGS) && mkdir -p $(TSAN_LOGS)
	cd build-tsan && status=0; \
	  TSAN_OPTIONS="suppressions=$(CURDIR)/scripts/tsan.supp log_path=$(TSAN_LOGS)/report exitcode=0 second_deadlock_stack=1" \
	  ctest --output-on-failure -j $(JOBS) -L threads || status=1; \
	  sh $(CURDIR)/tests/tsan/tsanreports.sh $(CURDIR)/build-tsan $$(ls $(TSAN_LOGS)/report.* 2>/dev/null) || status=1; \
	  exit $$status

clean:
	rm -rf $(BUILD) build-asan build-tsan
