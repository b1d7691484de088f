// The vekta tool's parts: reading motions, running them, the CSV and the plot
// script.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "motion.h"
#include "plot.h"
#include "trajectory.h"

namespace vekta::cli {
namespace {

using nlohmann::json;

std::string errorOf(const json& j) {
    try {
        motionFromJson(j);
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

json oneAxis() {
    return json::parse(R"({"jerkRatio": 10, "axes": [
        {"position": 0.5, "velocity": -0.2, "acceleration": 0.3, "target": 1.5,
         "limits": {"velocity": 1.0, "acceleration": 4.0}}]})");
}

TEST(VektaTool, ReadsAMotionWithItsDefaults) {
    const Motion m = motionFromJson(oneAxis());
    EXPECT_EQ(m.mode, Mode::Position);
    EXPECT_EQ(m.axes, 1);
    EXPECT_EQ(m.jerkRatio, 10.0);
    EXPECT_EQ(m.pos[0], 0.5);
    EXPECT_EQ(m.vel[0], -0.2);
    EXPECT_EQ(m.acc[0], 0.3);
    EXPECT_EQ(m.tgt[0], 1.5);
    EXPECT_EQ(m.maxVel[0], 1.0);
    EXPECT_EQ(m.maxAcc[0], 4.0);

    // A stop needs no target; the state defaults to rest.
    const Motion stop = motionFromJson(
        json::parse(R"({"mode": "velocity", "jerkRatio": 5, "axes": [{"limits": {"velocity": 1, "acceleration": 2}}]})"));
    EXPECT_EQ(stop.mode, Mode::Velocity);
    EXPECT_EQ(stop.pos[0], 0.0);
    EXPECT_EQ(stop.vel[0], 0.0);
}

TEST(VektaTool, RefusesMotionsItCannotPlanWithAReason) {
    struct Case {
        const char* edit;  // JSON merge patch applied to oneAxis()
        const char* reason;
    };
    const Case cases[] = {
        {R"({"jerkRatio": null})", "\"jerkRatio\" is missing"},
        {R"({"jerkRatio": "10"})", "\"jerkRatio\" must be a number"},
        {R"({"jerkRatio": 0})", "jerk ratio must be positive"},
        {R"({"mode": "fast"})", "mode must be"},
        {R"({"speed": 1})", "unknown key \"speed\""},
        {R"({"axes": []})", "1 or 6 axes, not 0"},
        {R"({"axes": [{"target": 1, "limits": {"velocity": 1, "acceleration": 1}},
                      {"target": 1, "limits": {"velocity": 1, "acceleration": 1}}]})",
         "1 or 6 axes, not 2"},
        {R"({"axes": [{"limits": {"velocity": 1, "acceleration": 1}}]})", "axis 0: \"target\" is missing"},
        {R"({"axes": [{"target": 1}]})", "axis 0: \"limits\" is missing"},
        {R"({"axes": [{"target": 1, "limits": {"velocity": 1}}]})", "\"acceleration\" is missing"},
        {R"({"axes": [{"target": 1, "limits": {"velocity": -1, "acceleration": 1}}]})", "limits must be positive"},
        {R"({"axes": [{"target": 1, "postion": 2, "limits": {"velocity": 1, "acceleration": 1}}]})",
         "unknown key \"postion\""},
        {R"({"conveyor": {"velocity": 1, "limit": 2}})", "only read in the conveyor mode"},
        {R"({"mode": "conveyor"})", "\"conveyor\" is missing"},
    };
    for (const Case& c : cases) {
        json j = oneAxis();
        j.merge_patch(json::parse(c.edit));
        const std::string error = errorOf(j);
        EXPECT_NE(error.find(c.reason), std::string::npos) << c.edit << " gave: \"" << error << "\"";
    }
}

TEST(VektaTool, AMotionSurvivesJsonAndTheCommandLine) {
    const Motion demo = demoMotion();
    const Motion back = motionFromJson(json::parse(motionToJson(demo).dump()));
    ASSERT_EQ(back.axes, 6);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(back.pos[i], demo.pos[i]);
        EXPECT_EQ(back.vel[i], demo.vel[i]);
        EXPECT_EQ(back.acc[i], demo.acc[i]);
        EXPECT_EQ(back.tgt[i], demo.tgt[i]);
        EXPECT_EQ(back.maxVel[i], demo.maxVel[i]);
        EXPECT_EQ(back.maxAcc[i], demo.maxAcc[i]);
    }

    const Motion args = motionFromArgs("conveyor", 8.0, {"0,0,0,0.4,1,3"}, "0.25,2,1");
    EXPECT_EQ(args.mode, Mode::Conveyor);
    EXPECT_EQ(args.tgt[0], 0.4);
    EXPECT_EQ(args.maxAcc[0], 3.0);
    EXPECT_EQ(args.conveyorVel, 0.25);
    EXPECT_EQ(args.conveyorLimit, 2.0);
    EXPECT_THROW(motionFromArgs("position", 8.0, {"0,0,0,1,1"}, ""), std::runtime_error);
    EXPECT_THROW(motionFromArgs("position", 8.0, {"0,0,0,1,1,x"}, ""), std::runtime_error);
    EXPECT_THROW(motionFromArgs("conveyor", 8.0, {"0,0,0,1,1,3"}, ""), std::runtime_error);
}

TEST(VektaTool, TheDemoEndsTogetherOnTargetWithinItsLimits) {
    const Trajectory tr = runTrajectory(demoMotion(), false, false);
    ASSERT_TRUE(tr.accepted);
    ASSERT_TRUE(tr.finished);
    const int periods = tr.axis[0].finishedPeriod;
    EXPECT_EQ(static_cast<int>(tr.rows.size()), periods + 1);
    EXPECT_GT(tr.plannedTime, (periods - 1) * kPeriod);
    EXPECT_LE(tr.plannedTime, periods * kPeriod);
    for (int i = 0; i < 6; ++i) {
        const AxisSummary& s = tr.axis[i];
        EXPECT_EQ(s.finishedPeriod, periods) << "axis " << i;
        EXPECT_NEAR(s.end, tr.motion.tgt[i], 1e-9) << "axis " << i;
        EXPECT_LE(s.peakVel, tr.motion.maxVel[i] * (1 + 1e-9)) << "axis " << i;
        EXPECT_LE(s.peakAcc, tr.motion.maxAcc[i] * (1 + 1e-9)) << "axis " << i;
        EXPECT_LE(s.peakJerk, tr.jerkLimit(i) * (1 + 1e-6)) << "axis " << i;
    }
    // Axis 1 starts moving; the first row is the start state.
    EXPECT_EQ(tr.rows[0].vel[1], 0.6);
    EXPECT_EQ(tr.rows[0].jerk[1], 0.0);
    // The jerk column is the change of acceleration over one period.
    for (std::size_t k = 1; k < tr.rows.size(); ++k) {
        for (int i = 0; i < 6; ++i) {
            EXPECT_DOUBLE_EQ(tr.rows[k].jerk[i], (tr.rows[k].acc[i] - tr.rows[k - 1].acc[i]) / kPeriod);
        }
        EXPECT_NEAR(tr.rows[k].t, k * kPeriod, 1e-12);
    }
}

TEST(VektaTool, CsvAndPlotScriptCarryEveryAxis) {
    const Trajectory tr = runTrajectory(demoMotion(), false, false);
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* mem = open_memstream(&text, &size);
    writeCsv(mem, tr);
    std::fclose(mem);
    const std::string csv(text, size);
    std::free(text);
    EXPECT_EQ(csv.substr(0, csv.find('\n')),
              "t,pos0,vel0,acc0,jerk0,pos1,vel1,acc1,jerk1,pos2,vel2,acc2,jerk2,pos3,vel3,acc3,jerk3,"
              "pos4,vel4,acc4,jerk4,pos5,vel5,acc5,jerk5");
    long lines = 0;
    for (char c : csv) lines += c == '\n';
    EXPECT_EQ(lines, static_cast<long>(tr.rows.size()) + 1);

    const std::string script = gnuplotScript(tr, "out's.png", "title");
    EXPECT_NE(script.find("set output 'out''s.png'"), std::string::npos);
    for (int i = 0; i < 6; ++i) {
        EXPECT_NE(script.find("title 'axis " + std::to_string(i) + "'"), std::string::npos) << i;
    }
    // Dashed limit lines at +-V, +-A and +-J of the fastest wrist axis.
    for (const char* limit : {"4 with lines dt 2", "-4 with lines dt 2", "14 with lines dt 2", "-140 with lines dt 2"}) {
        EXPECT_NE(script.find(limit), std::string::npos) << limit;
    }
}

TEST(VektaTool, ARejectedMotionIsReportedNotSampled) {
    // The conveyor would carry the target past its limit before the catch-up ends.
    const Motion m = motionFromArgs("conveyor", 8.0, {"0,0,0,1.5,1,3"}, "0.5,1.6,1");
    const Trajectory tr = runTrajectory(m, false, false);
    EXPECT_FALSE(tr.accepted);
    EXPECT_EQ(tr.rows.size(), 1u);
}

}  // namespace
}  // namespace vekta::cli
