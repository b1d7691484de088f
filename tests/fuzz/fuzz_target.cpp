// libFuzzer entry point: run the driver, abort on the first broken property.
#include <cstdio>
#include <cstdlib>

#include "fuzz_driver.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // VEKTA_FUZZ_TRACE=1 describes the calls an input makes (on stderr).
    vekta::fuzz::traceCalls = std::getenv("VEKTA_FUZZ_TRACE") != nullptr;
    // The library's diagnostics would drown the fuzzer's own output.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return 0;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const char* failure = vekta::fuzz::runInput(data, size);
    if (failure != nullptr) {
        std::fprintf(stderr, "vekta fuzz: %s\n", failure);
        std::abort();
    }
    return 0;
}
