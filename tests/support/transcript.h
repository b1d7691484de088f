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
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace vekta::test {

// The bits of a double and its value, as "3ff0000000000000(1)"; any NaN as "nan".
std::string bits(double x);

// Sends standard output to a temporary file while it lives, or until text().
// Header-only, so that tests that do not link the recorder can capture too.
class Output {
public:
    Output() {
        std::fflush(stdout);
        char path[] = "/tmp/vekta-output-XXXXXX";
        fd_ = mkstemp(path);
        unlink(path);  // the file lives on while it is open
        saved_ = dup(STDOUT_FILENO);
        dup2(fd_, STDOUT_FILENO);
    }
    ~Output() { text(); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    // What was written since the last call.
    std::string take() {
        std::fflush(stdout);
        std::string s;
        char buf[4096];
        for (ssize_t n; (n = pread(fd_, buf, sizeof buf, offset_)) > 0; offset_ += n) s.append(buf, n);
        return s;
    }
    // Stops capturing (standard output is the real one again) and returns
    // what was written since the last take(); "" once stopped.
    std::string text() {
        if (saved_ < 0) return "";
        std::string s = take();
        dup2(saved_, STDOUT_FILENO);
        close(saved_), close(fd_);
        saved_ = -1;
        return s;
    }

private:
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
