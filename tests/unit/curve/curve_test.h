#pragma once

#include "core/state.h"
#include "tests/support/leak_check.h"

/// A started core; each test ends by seeing that every block went back to the host.
class CurveTest : public LeakCheckedTest {
protected:
    void SetUp() override { core::coreStart(); }

    void TearDown() override {
        core::coreStop();
        LeakCheckedTest::TearDown();
    }
};
