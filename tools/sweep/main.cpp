// vekta-sweep: the randomized end-to-end sweep.
//
//   vekta-sweep [--seed S] [--count N]   run N motions (default 100000), print the summary
//   vekta-sweep --seed S --case I        replay motion I with the library's output shown
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

#include "sweep.h"
#include "vekta/vekta.h"

using namespace vekta::sweep;

int main(int argc, char** argv) {
    std::uint64_t seed = 1, count = 100000, only = 0;
    bool replay = false, trace = false;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (!std::strcmp(argv[i], "--seed") && hasValue) {
            seed = std::strtoull(argv[++i], nullptr, 10);
        } else if (!std::strcmp(argv[i], "--count") && hasValue) {
            count = std::strtoull(argv[++i], nullptr, 10);
        } else if (!std::strcmp(argv[i], "--case") && hasValue) {
            only = std::strtoull(argv[++i], nullptr, 10);
            replay = true;
        } else if (!std::strcmp(argv[i], "--trace")) {
            trace = true;
        } else {
            std::fprintf(stderr, "usage: %s [--seed S] [--count N] [--case I [--trace]]\n", argv[0]);
            return 2;
        }
    }

    if (replay) {
        const Motion m = drawMotion(seed, only);
        printMotion(stdout, m);
        setTestLevel(trace);
        const Outcome o = runMotion(m);
        std::fflush(stdout);
        char check[256];
        vektaCheckPlan(check, sizeof check);
        std::printf("plan check: %s (%s)\n", checkCodeName(o.checkCode), check);
        std::printf("planned %.17g s, %d periods;", o.plannedTime, o.periods);
        bool any = false;
        for (int k = 0; k < kFailureKinds; ++k) {
            if (o.failed[k]) std::printf(" %s", failureName(k)), any = true;
        }
        std::printf("%s\n", any ? "" : " ok");
        return any ? 1 : 0;
    }

    Summary s;
    s.seed = seed;
    const bool progress = isatty(STDERR_FILENO) != 0;
    {
        QuietStdout quiet;
        for (std::uint64_t i = 0; i < count; ++i) {
            const Motion m = drawMotion(seed, i);
            s.add(i, m, runMotion(m));
            if (progress && count >= 100 && (i + 1) % (count / 100) == 0) {
                std::fprintf(stderr, "\r%3llu%%", static_cast<unsigned long long>((i + 1) * 100 / count));
            }
        }
        if (progress) std::fprintf(stderr, "\r    \r");
        printSummary(quiet.out(), s, argv[0]);
    }
    return 0;
}
