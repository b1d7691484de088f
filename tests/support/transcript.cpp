#include "support/transcript.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "vekta/vekta.h"

namespace vekta::test {

namespace {

constexpr int kChunk = 32;      // sampling calls of one axis per unit
constexpr int kGuard = 8;       // entries after the samples that must stay untouched
constexpr double kMarker = -7.0;

std::uint64_t fnv(const std::string& s) {
    std::uint64_t h = 0xcbf29ce484222325ull;
    for (const unsigned char c : s) h = (h ^ c) * 0x100000001b3ull;
    return h;
}

std::string hex(std::uint64_t h) {
    char s[20];
    std::snprintf(s, sizeof s, "%016" PRIx64, h);
    return s;
}

std::string withoutNanSign(std::string s) {
    for (std::size_t at; (at = s.find("-nan")) != std::string::npos;) s.erase(at, 1);
    return s;
}

// One line per case: index, hash of all units, short hash of each unit.
std::string digestLine(std::size_t index, const std::vector<std::string>& units) {
    std::string all, shortHashes;
    for (const std::string& u : units) {
        const std::string h = hex(fnv(u));
        all += h;
        shortHashes += " " + h.substr(8);
    }
    return std::to_string(index) + " " + hex(fnv(all)) + shortHashes;
}

void writeCase(const std::string& file, const std::vector<std::string>& units) {
    std::ofstream dump(file);
    for (const std::string& u : units) dump << u;
}

}  // namespace

std::string bits(double x) {
    if (std::isnan(x)) return "nan";
    std::uint64_t b;
    std::memcpy(&b, &x, sizeof b);
    char s[48];
    std::snprintf(s, sizeof s, "%016" PRIx64 "(%.9g)", b, x);
    return s;
}

void Recorder::update(const std::string& call, bool ok) {
    flushAll();
    char why[200];
    const int code = vektaCheckPlan(why, sizeof why);
    units.push_back(withoutNanSign(call + " -> " + std::to_string(ok) + "\n" + out_.take() + "\ncheck " +
                                   std::to_string(code) + " " + why + "\nleft " + bits(getLeftMoveTime()) + "\n"));
}

int Recorder::sample(int axis, int nSamples, bool velocityName, double& pos, double& vel, double& acc) {
    double p[8 + kGuard], v[8 + kGuard], a[8 + kGuard];
    for (int k = 0; k < 8 + kGuard; ++k) p[k] = v[k] = a[k] = kMarker;
    int count = -1;
    const int done = velocityName ? vektaVelocityModePerFreedom(axis, nSamples, p, v, a, count)
                                  : vektaPositionModePerFreedom(axis, nSamples, p, v, a, count);
    const std::string where = " (axis " + std::to_string(axis) + ", nSamples " + std::to_string(nSamples) + ")\n";
    if (done != 0 && done != 1) problems += "result " + std::to_string(done) + where;
    if (count < 0 || count > (nSamples > 0 ? nSamples : 0)) problems += "count " + std::to_string(count) + where;
    const int written = count > 0 && count <= 8 ? count : 0;
    for (int k = written; k < 8 + kGuard; ++k) {
        if (p[k] != kMarker || v[k] != kMarker || a[k] != kMarker) problems += "write beyond the count" + where;
    }
    std::string& u = open_[axis < 0 || axis > 5 ? 0 : axis];
    u += "s" + std::to_string(axis) + " " + std::to_string(done) + " " + std::to_string(count);
    for (int k = 0; k < written; ++k) u += " " + bits(p[k]) + " " + bits(v[k]) + " " + bits(a[k]);
    if (axis == 0) u += " left " + bits(getLeftMoveTime());
    u += "\n" + withoutNanSign(out_.take());
    if (written > 0) pos = p[written - 1], vel = v[written - 1], acc = a[written - 1];
    if (axis >= 0 && axis < 6 && ++calls_[axis] == kChunk) flush(axis);
    return done;
}

void Recorder::flush(int axis) {
    if (!open_[axis].empty()) units.push_back(open_[axis]);
    open_[axis].clear();
    calls_[axis] = 0;
}

void Recorder::flushAll() {
    for (int a = 0; a < 6; ++a) flush(a);
}

void expectMatchesDigest(const std::vector<std::vector<std::string>>& transcripts, const std::string& path) {
    if (const char* dir = std::getenv("VEKTA_TRANSCRIPT_DUMP")) {
        for (std::size_t i = 0; i < transcripts.size(); ++i) {
            writeCase(std::string(dir) + "/case-" + std::to_string(i) + ".txt", transcripts[i]);
        }
    }
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < transcripts.size(); ++i) lines.push_back(digestLine(i, transcripts[i]));
    if (const char* update = std::getenv("VEKTA_TRANSCRIPT_UPDATE"); update != nullptr && std::string(update) == "1") {
        std::ofstream f(path);
        for (const std::string& l : lines) f << l << "\n";
        GTEST_SKIP() << "wrote " << path;
    }
    std::ifstream f(path);
    ASSERT_TRUE(f) << "no digest at " << path;
    std::vector<std::string> pinned;
    for (std::string l; std::getline(f, l);) pinned.push_back(l);
    ASSERT_EQ(pinned.size(), lines.size()) << path << " pins another number of cases";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (pinned[i] == lines[i]) continue;
        // The first unit whose short hash differs.
        std::istringstream was(pinned[i]), now(lines[i]);
        std::string a, b;
        std::size_t unit = 0;
        was >> a >> a, now >> b >> b;
        while (was >> a && now >> b && a == b) ++unit;
        const std::string file = std::string(VEKTA_TRANSCRIPT_FAILURE_DIR) + "/transcript-case-" + std::to_string(i) + ".txt";
        writeCase(file, transcripts[i]);
        FAIL() << "case " << i << " of " << path << " differs from unit " << unit << " on; its transcript is in " << file
               << " (VEKTA_TRANSCRIPT_DUMP=DIR on the pinned build writes the old one to compare)";
    }
}

}  // namespace vekta::test
