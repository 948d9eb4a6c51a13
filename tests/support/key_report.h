#pragma once

#include <gtest/gtest.h>

#include "project/project_key_record.h"

inline void expectReport(const KeyReport& report, const KeyReport& expected) {
    EXPECT_EQ(report.fault, expected.fault);
    EXPECT_EQ(report.attribute, expected.attribute);
    EXPECT_EQ(report.found, expected.found);
    EXPECT_EQ(report.allowed, expected.allowed);
}
