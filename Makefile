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

# The threaded tests built with ThreadSanitizer.
test-tsan: deps
	cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DKABROWSER_BUILD_BENCH=OFF \
	  -DKABROWSER_SANITIZE=thread
	cmake --build build-tsan -j $(JOBS)
	cd build-tsan && TSAN_OPTIONS="suppressions=$(CURDIR)/scripts/tsan.supp halt_on_error=1" \
	  ctest --output-on-failure -j $(JOBS) -L threads

clean:
	rm -rf $(BUILD) build-asan build-tsan
