# Velarion's commands: `make run` (the demo show, headless), `make test` and
# `make bench`. Each installs what is missing, builds, and runs.

BUILD     ?= build
ASAN      ?= build-asan
FUZZ      ?= build-fuzz
JOBS      ?= $(shell nproc)
FUZZ_SECONDS ?= 20
CMAKE_GEN := -G Ninja

.PHONY: deps build run test unit-test sanitize-test fuzz-test boundary-check bench clean

deps:
	@scripts/install-deps

$(BUILD)/build.ninja: CMakeLists.txt | deps
	cmake -S . -B $(BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

unit-test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The core libraries' tests again under AddressSanitizer and UBSan.
sanitize-test: deps
	cmake -S . -B $(ASAN) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DVELARION_SANITIZE=ON -DVELARION_CORE_ONLY=ON
	cmake --build $(ASAN) -j $(JOBS)
	cd $(ASAN) && ctest --output-on-failure -j $(JOBS)

# A short libFuzzer run of every parser of outside input, on the kept corpus.
fuzz-test: deps
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELARION_FUZZ=ON
	cmake --build $(FUZZ) -j $(JOBS)
	scripts/run-fuzzers $(FUZZ) $(FUZZ_SECONDS)

boundary-check: build
	scripts/check-boundaries $(BUILD)

test: unit-test sanitize-test fuzz-test boundary-check

# The demo show on a fresh copy, opened by `velarion --headless`.
# `make run AGENT=run,edit` lets an agent run the show and build shows
# (kept in the preferences; AGENT=none takes it back).
run: build
	scripts/run-demo $(BUILD) $(AGENT)

bench: build
	scripts/run-benchmarks $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN) $(FUZZ)
