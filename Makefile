# Thin wrapper over the CMake presets.
#   make test   install what is missing, build with the sanitizers, run every test;
#               then the same tests once more on a release build
#   make build  the same build without running the tests
#   make demo   build the vekta tool (release) and run its demo: table, CSV, PNG
#   make bench  the Google Benchmark suite on a release build (BENCH_ARGS=... passed on)
#   make fuzz [SECONDS=600]  run the libFuzzer target longer than the tests do
PRESET ?= ci
JOBS ?= $(shell nproc)
SECONDS ?= 600

.PHONY: test build deps clean demo bench fuzz

test: build
	ctest --preset $(PRESET) -j $(JOBS)
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	ctest --preset release -j $(JOBS)

build: deps
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) -j $(JOBS)

DEMO_DIR ?= build/demo

demo: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target vekta-cli
	mkdir -p $(DEMO_DIR)
	build/release/tools/vekta demo --csv $(DEMO_DIR)/vekta-demo.csv --plot $(DEMO_DIR)/vekta-demo.png

bench: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS) --target vekta_bench
	build/release/bench/vekta_bench $(BENCH_ARGS)

deps:
	@bash tools/install-deps.sh

fuzz: build
	bash tests/fuzz/run_fuzz.sh build/$(PRESET)/tests/fuzz/vekta_fuzz $(SECONDS) build/$(PRESET)/tests/fuzz-long tests/fuzz

clean:
	rm -rf build
