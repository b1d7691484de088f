# Thin wrapper over the CMake presets.
#   make demo   install what the demo needs, build the vekta tool (release) and
#               run its demo: tables, CSV, plots in build/demo/
#   make test   install what the tests need, build with the sanitizers, run every test;
#               then the same tests once more on a release build
#   make build  the same build without running the tests
#   make bench  the Google Benchmark suite on a release build (BENCH_ARGS=... passed on)
#   make fuzz [SECONDS=600]  run the libFuzzer target longer than the tests do
PRESET ?= ci
JOBS ?= $(shell nproc)
SECONDS ?= 600
# Quiet builds: the configure step shows only warnings and errors (stderr),
# and make does not announce every directory it enters.
CONFIGURE = cmake --log-level=WARNING --preset
QUIET = > /dev/null
MAKEFLAGS += --no-print-directory

.PHONY: test build deps deps-demo clean demo bench fuzz

test: build
	ctest --preset $(PRESET) -j $(JOBS)
	$(CONFIGURE) release $(QUIET)
	cmake --build --preset release -j $(JOBS)
	ctest --preset release -j $(JOBS)

build: deps
	$(CONFIGURE) $(PRESET) $(QUIET)
	cmake --build --preset $(PRESET) -j $(JOBS)

DEMO_DIR ?= build/demo

demo: deps-demo
	@echo "building the library and the vekta tool (release) ..."
	@$(CONFIGURE) tool $(QUIET)
	@cmake --build --preset tool -j $(JOBS) --target vekta-cli
	@mkdir -p $(DEMO_DIR)
	build/tool/tools/vekta demo --csv $(DEMO_DIR)/vekta-demo.csv --plot $(DEMO_DIR)/vekta-demo.png

bench: deps
	$(CONFIGURE) release $(QUIET)
	cmake --build --preset release -j $(JOBS) --target vekta_bench
	build/release/bench/vekta_bench $(BENCH_ARGS)

deps:
	@bash tools/install-deps.sh test

deps-demo:
	@bash tools/install-deps.sh demo

fuzz: build
	bash tests/fuzz/run_fuzz.sh build/$(PRESET)/tests/fuzz/vekta_fuzz $(SECONDS) build/$(PRESET)/tests/fuzz-long tests/fuzz

clean:
	rm -rf build
