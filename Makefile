# Thin wrapper over the CMake presets.
#   make test   install what is missing, build with the sanitizers, run every test
#   make build  the same build without running the tests
#   make fuzz [SECONDS=600]  run the libFuzzer target longer than the tests do
PRESET ?= ci
JOBS ?= $(shell nproc)
SECONDS ?= 600

.PHONY: test build deps clean fuzz

test: build
	ctest --preset $(PRESET) -j $(JOBS)

build: deps
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) -j $(JOBS)

deps:
	@bash tools/install-deps.sh

fuzz: build
	bash tests/fuzz/run_fuzz.sh build/$(PRESET)/tests/fuzz/vekta_fuzz $(SECONDS) build/$(PRESET)/tests/fuzz-long tests/fuzz

clean:
	rm -rf build
