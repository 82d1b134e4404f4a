# Set-up, build and test entry points. `make demo` and `make test` work on a fresh Debian machine.
BUILD_DIR ?= build
JOBS ?= $(shell nproc)

.PHONY: all deps configure build demo test bench clean format

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

test: deps build
	@cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

bench: deps build
	@$(BUILD_DIR)/bin/lattica_bench

format:
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR)
