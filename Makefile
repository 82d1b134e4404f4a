# Set-up, build and test entry points. `make demo` and `make test` work on a fresh Debian machine.
BUILD_DIR ?= build
SANITIZE_DIR ?= build-sanitize
FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 20
JOBS ?= $(shell nproc)

.PHONY: all deps configure build demo test fuzz sanitize bench clean format

all: build

deps:
	@bash scripts/install-deps.sh

configure:
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

demo: deps build
	@mkdir -p out/demo
	@$(BUILD_DIR)/bin/lattica render examples/default.json -o out/demo/frame_####.png --frames 0
	@echo "demo: wrote out/demo/frame_0000.png"

# The short fuzz run goes first, so that ctest's summary closes the output.
test: deps build
	@bash tests/fuzz/run.sh $(FUZZ_DIR) $(FUZZ_SECONDS)
	@cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# The OBJ reader's fuzz target for a bounded time; skipped where clang or libFuzzer is missing.
fuzz: deps
	@bash tests/fuzz/run.sh $(FUZZ_DIR) $(FUZZ_SECONDS)

# Every suite under AddressSanitizer and UndefinedBehaviorSanitizer.
sanitize: deps
	@cmake -S . -B $(SANITIZE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DLATTICA_SANITIZE=ON -DLATTICA_BUILD_BENCH=OFF
	@cmake --build $(SANITIZE_DIR) -j $(JOBS)
	@cd $(SANITIZE_DIR) && ctest --output-on-failure -j $(JOBS)

bench: deps build
	@$(BUILD_DIR)/bin/lattica_bench

format:
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR) $(SANITIZE_DIR) $(FUZZ_DIR)
