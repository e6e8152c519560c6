// Feeds arbitrary text to the two time parsers, as an operator's typing or an
// agent's arguments reach them. They answer none rather than fail; what they
// answer must be usable as it stands: a finite length, a real minute of the
// day that reads back through the clock form.

#include "FuzzCheck.h"
#include "LiveModel/TimeText.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velarion;
    const std::string_view text = textOf(data, size);
    if (auto seconds = TimeText::seconds(text)) require(std::isfinite(*seconds));
    if (auto minute = TimeText::minuteOfDay(text)) {
        require(*minute >= 0 && *minute < 24 * 60);
        require(TimeText::minuteOfDay(TimeText::clock(*minute)) == minute);
    }
    return 0;
}
