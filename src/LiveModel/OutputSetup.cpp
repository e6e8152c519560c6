#include "LiveModel/OutputSetup.h"

#include <cmath>
#include <cstdio>

namespace velarion {

bool VideoFrameRate::isValid() const {
    if (numerator < 1 || numerator > 120000 || denominator < 1 || denominator > 120000) {
        return false;
    }
    const double rate = static_cast<double>(numerator) / denominator;
    return rate >= 1 && rate <= 120;
}

std::string VideoFrameRate::name() const {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f",
                  denominator == 0 ? 0.0 : static_cast<double>(numerator) / denominator);
    return text;
}

int NetworkFeed::framesPerSecond() const {
    if (!frameRate.isValid()) return 30;
    return static_cast<int>(std::lround(static_cast<double>(frameRate.numerator) /
                                        frameRate.denominator));
}

bool NetworkFeed::hasValidFormat() const {
    return width >= 16 && width <= 8192 && width % 2 == 0 && height >= 16 && height <= 8192 &&
           frameRate.isValid();
}

} // namespace velarion
