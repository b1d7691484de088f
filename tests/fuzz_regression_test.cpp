// Every committed fuzz input - the seed corpus and the inputs that once broke
// a property - replayed through the fuzz driver with the regular build.
#include <gtest/gtest.h>

#include <dirent.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/fuzz_driver.h"
#include "support/test_support.h"

namespace vekta {
namespace {

std::vector<std::string> filesIn(const std::string& dir) {
    std::vector<std::string> files;
    if (DIR* d = opendir(dir.c_str())) {
        while (const dirent* e = readdir(d)) {
            if (e->d_name[0] != '.') files.push_back(dir + "/" + e->d_name);
        }
        closedir(d);
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replayAll(const std::string& dir, std::size_t atLeast) {
    const std::vector<std::string> files = filesIn(dir);
    EXPECT_GE(files.size(), atLeast) << dir;
    for (const std::string& f : files) {
        std::ifstream in(f, std::ios::binary);
        const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        test::StdoutCapture quiet;
        const char* failure = fuzz::runInput(bytes.data(), bytes.size());
        quiet.text();
        EXPECT_EQ(failure, nullptr) << f << ": " << failure;
    }
}

TEST(FuzzRegression, InputsThatOnceBrokeAPropertyHoldNow) { replayAll(VEKTA_FUZZ_INPUTS "/regressions", 1); }

TEST(FuzzRegression, TheSeedCorpusHolds) { replayAll(VEKTA_FUZZ_INPUTS "/corpus", 5); }

}  // namespace
}  // namespace vekta
