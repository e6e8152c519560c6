// Feeds arbitrary bytes to the show document's decoder. A refusal is the
// expected outcome for almost every input; any other exception, a crash, a
// sanitizer report, a hang or a blown memory limit is a bug.
//
// Decoded shows are encoded again: whatever the decoder accepts must be
// writable, and must read back as the same show.

#include "FuzzCheck.h"
#include "LiveModel/ShowJson.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    velarion::Show show;
    try {
        // With a version check, so that the header is read on its own first.
        show = velarion::decodeShow(text, [](int) {});
    } catch (const velarion::ShowDecodeError&) {
        return 0;
    }
    std::string encoded;
    try {
        encoded = velarion::encodeShow(show);
    } catch (const velarion::ShowEncodeError&) {
        // Decoding only accepts finite numbers, so this can't be reached.
        std::abort();
    }
    require(velarion::decodeShow(encoded) == show);
    return 0;
}
