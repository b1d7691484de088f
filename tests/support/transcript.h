// Transcripts: what the library prints and returns, call by call, written down
// exactly and pinned by a digest file kept in the repository.
//
// A transcript is a list of units (an update with what it printed, its plan
// check and its left time; or a run of sampling calls of one axis with every
// sample as exact bits). Each unit is hashed; the digest file holds one line
// per case: its index, the hash of all its units and each unit's short hash.
// A mismatch names the first case and unit that differ and writes the case's
// transcript to a file. VEKTA_TRANSCRIPT_UPDATE=1 rewrites the digest (only
// for a deliberate change of output, committed with the reason);
// VEKTA_TRANSCRIPT_DUMP=DIR writes every case's transcript, to diff two builds.
//
// A NaN is written as "nan" whatever its sign bit, in samples and in printed
// text alike: its sign depends on how the compiler ordered the arithmetic, so
// it differs between a Debug and a Release build.
#ifndef VEKTA_TESTS_TRANSCRIPT_H
#define VEKTA_TESTS_TRANSCRIPT_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace vekta::test {

// The bits of a double and its value, as "3ff0000000000000(1)"; any NaN as "nan".
std::string bits(double x);

// Sends standard output to a temporary file while it lives; take() returns
// what was written since the last call.
class Output {
public:
    Output();
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    std::string take();

private:
    char path_[64];
    int fd_, saved_;
    off_t offset_ = 0;
};

class Recorder {
public:
    explicit Recorder(Output& out) : out_(out) {}
    std::vector<std::string> units;
    // Broken promises of the sampler: a write beyond the count, a count
    // outside 0..nSamples, a result other than 0 or 1.
    std::string problems;

    void note(const std::string& text) { units.push_back(text); }
    // An update's call and result, what it printed, the plan check and the left time.
    void update(const std::string& call, bool ok);
    // One sampling call of one axis (nSamples <= 8) through guarded arrays;
    // the last sample written is left in (pos, vel, acc).
    int sample(int axis, int nSamples, bool velocityName, double& pos, double& vel, double& acc);
    void flushAll();

private:
    void flush(int axis);
    Output& out_;
    std::string open_[6];
    int calls_[6] = {};
};

// Compares the transcripts with the digest file (or rewrites it, see above).
void expectMatchesDigest(const std::vector<std::vector<std::string>>& transcripts, const std::string& path);

}  // namespace vekta::test

#endif
