// The rules of the graph's leaf values: durations, dates and URLs.

#include "ShowCore/DurationValue.h"
#include "ShowCore/ShowDate.h"
#include "ShowCore/ShowURL.h"
#include "ShowCore/ShowValueError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace velarion::showcore {
namespace {

TEST(ShowValuesTest, DurationsAreFiniteAndNonnegative) {
    for (double refused : {-1.0, -1e-9, std::numeric_limits<double>::infinity(), std::nan("")}) {
        try {
            DurationValue::make(refused);
            ADD_FAILURE() << refused << " accepted";
        } catch (const ShowValueError& error) {
            EXPECT_STREQ(error.what(), "Duration must be finite and nonnegative");
        }
    }
    EXPECT_EQ(DurationValue::make(0.0), DurationValue::make(-0.0));
    EXPECT_FALSE(std::signbit(DurationValue::make(-0.0).seconds()));
    EXPECT_EQ(DurationValue::make(86400.5).seconds(), 86400.5);
}

TEST(ShowValuesTest, DatesHaveOneTextForm) {
    const std::vector<std::pair<std::int64_t, const char*>> dates = {
        {0, "1970-01-01T00:00:00.000Z"},
        {-1, "1969-12-31T23:59:59.999Z"},
        {951'782'400'000, "2000-02-29T00:00:00.000Z"},
        {253'402'300'799'999, "9999-12-31T23:59:59.999Z"},
        {-62'167'219'200'000, "0000-01-01T00:00:00.000Z"},
    };
    for (const auto& [milliseconds, text] : dates) {
        EXPECT_EQ(ShowDate{milliseconds}.text(), text);
        EXPECT_EQ(ShowDate::parse(text), ShowDate{milliseconds}) << text;
    }
    EXPECT_EQ(ShowDate::parse("2026-01-01T10:00:00Z"), ShowDate::parse("2026-01-01T10:00:00.000Z"));
    EXPECT_FALSE(ShowDate{ShowDate::latestMilliseconds + 1}.hasTextForm());
    EXPECT_FALSE(ShowDate{ShowDate::earliestMilliseconds - 1}.hasTextForm());
    for (const char* refused : {"2026-02-29T00:00:00Z", "2026-01-01 00:00:00Z", "2026-01-01T24:00:00Z",
                                "2026-01-01T00:00:00.1Z", "2026-01-01T00:00:00+01:00", "2026-1-01T00:00:00Z", ""}) {
        EXPECT_FALSE(ShowDate::parse(refused)) << refused;
    }
}

} // namespace
} // namespace velarion::showcore
