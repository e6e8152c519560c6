// Feeds arbitrary bytes to the show core library's JSON reader and then to
// the graph check. A refusal by the reader is the expected outcome for most
// inputs; any other exception, a crash, a sanitizer report, a hang or a
// blown memory limit is a bug.
//
// Whatever the reader accepts must be checked without throwing, give the
// same findings twice, agree with validateForPersistence, be writable, and
// read back as the same graph.

#include "FuzzCheck.h"
#include "ShowCore/ShowDocumentJson.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velarion::showcore;
    const std::string_view text = textOf(data, size);
    ShowDocument document;
    try {
        document = readShowDocument(text);
    } catch (const ShowJsonError&) {
        return 0;
    }
    const auto findings = validationFindings(document);
    require(validationFindings(document) == findings);
    try {
        document.validateForPersistence();
        require(findings.empty());
    } catch (const ShowValidationError& error) {
        require(!findings.empty() && error == findings.front());
    }
    std::string encoded;
    try {
        encoded = encodeShowDocument(document);
    } catch (const ShowJsonError&) {
        std::abort(); // the reader takes only finite numbers and valid text
    }
    require(readShowDocument(encoded) == document);
    return 0;
}
