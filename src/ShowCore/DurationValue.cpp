#include "ShowCore/DurationValue.h"

#include "ShowCore/ShowValueError.h"

#include <cmath>

namespace velarion::showcore {

DurationValue DurationValue::make(double seconds) {
    if (!std::isfinite(seconds) || seconds < 0) throw ShowValueError(invalidMessage);
    // -0.0 would compare equal to 0 yet print as "-0"; keep one zero.
    return DurationValue(seconds == 0 ? 0.0 : seconds);
}

} // namespace velarion::showcore
