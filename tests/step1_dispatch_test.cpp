// The step-1 dispatch: every id goes to the solver of its shape, the odd ids
// as the mirror variant; ids without a shape have no solver.
#include <gtest/gtest.h>

#include "step1/step1_solvers.h"
#include "support/test_support.h"

namespace vekta {
namespace {

TEST(Step1Dispatch, IdsMapToTheirShapeAndVariant) {
    const Step1SolverFn shapes[] = {solveStep1PTZNt, solveStep1PtZNt, solveStep1PTZNT, solveStep1PtZNT,
                                    solveStep1PTNt,  solveStep1PTNT,  solveStep1PtNT,  solveStep1PtNt};
    for (int id = 2; id <= 17; ++id) {
        const Step1Dispatch* row = step1DispatchFor(id);
        ASSERT_NE(row, nullptr) << id;
        EXPECT_EQ(row->solve, shapes[(id - 2) / 2]) << id;
        EXPECT_EQ(row->variant, id % 2 == 1) << id;
    }
    // 18/19 and 20/21 share one solver each: it reads the acceleration's sign, not the id.
    EXPECT_EQ(step1DispatchFor(18)->solve, step1DispatchFor(19)->solve);
    EXPECT_EQ(step1DispatchFor(20)->solve, step1DispatchFor(21)->solve);
    EXPECT_NE(step1DispatchFor(18)->solve, step1DispatchFor(20)->solve);
    for (int id : {-1, 0, 1, 22, 1000}) EXPECT_EQ(step1DispatchFor(id), nullptr) << id;
}

TEST(Step1Dispatch, RunsTheSolverOfTheRecordsId) {
    // A long rest-to-rest move solved by id 6 and, mirrored, by id 7.
    AxisPlan even = test::makeAxis(0.0, 0.0, 0.0, 5.0, 1.0, 2.0, 20.0);
    even.step1Profile = kStep1PTZNT;
    ASSERT_TRUE(runStep1Solver(even));
    AxisPlan odd = test::makeAxis(0.0, 0.0, 0.0, -5.0, 1.0, 2.0, 20.0);
    odd.step1Profile = kStep1PTZNT + 1;
    ASSERT_TRUE(runStep1Solver(odd));
    ASSERT_EQ(even.pointCount, odd.pointCount);
    for (int i = 0; i <= even.pointCount; ++i) {
        EXPECT_EQ(even.secTime[i], odd.secTime[i]);
        EXPECT_EQ(even.secPos[i], -odd.secPos[i]);
    }
    AxisPlan none = test::makeAxis(0.0, 0.0, 0.0, 5.0, 1.0, 2.0, 20.0);
    none.step1Profile = kStep1None;
    EXPECT_FALSE(runStep1Solver(none));
    EXPECT_EQ(none.pointCount, 1);
}

}  // namespace
}  // namespace vekta
