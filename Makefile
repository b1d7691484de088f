# Thin wrapper over the CMake presets.
#   make test   install what is missing, build with the sanitizers, run every test
#   make build  the same build without running the tests
PRESET ?= ci
JOBS ?= $(shell nproc)

.PHONY: test build deps clean

test: build
	ctest --preset $(PRESET) -j $(JOBS)

build: deps
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) -j $(JOBS)

deps:
	@bash tools/install-deps.sh

clean:
	rm -rf build
