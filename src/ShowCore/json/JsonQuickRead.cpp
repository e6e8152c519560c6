#include "ShowCore/json/JsonQuickRead.h"

#include "ShowCore/ShowValueError.h"

#include <bit>
#include <cstring>

namespace velarion::showcore::json {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// A byte that ends the plain run of a string: '"', '\\' or a control character.
bool endsPlainRun(unsigned char c) { return c == '"' || c == '\\' || c < 0x20; }

} // namespace

std::string_view QuickScanner::string() {
    if (peek() != '"') abandon();
    const char* start = ++at_;
    // Eight bytes at a time: each test below flags its lowest matching byte
    // exactly (higher flags may be false), so the lowest flag of all is where
    // the plain ASCII run ends.
    static_assert(std::endian::native == std::endian::little, "the lowest byte is the first");
    constexpr std::uint64_t ones = 0x0101010101010101ull;
    constexpr std::uint64_t highs = 0x8080808080808080ull;
    auto zeroBytes = [](std::uint64_t word) { return (word - ones) & ~word & highs; };
    for (;;) {
        while (end_ - at_ >= 8) {
            std::uint64_t word;
            std::memcpy(&word, at_, 8);
            const std::uint64_t flags = ((word - ones * 0x20) & ~word & highs) | zeroBytes(word ^ (ones * '"')) |
                                        zeroBytes(word ^ (ones * '\\')) | (word & highs);
            if (flags != 0) {
                at_ += std::countr_zero(flags) / 8;
                break;
            }
            at_ += 8;
        }
        if (end_ - at_ < 8) {
            while (at_ != end_ && endsPlainRun(static_cast<unsigned char>(*at_)) == false &&
                   static_cast<unsigned char>(*at_) < 0x80) {
                ++at_;
            }
        }
        if (at_ == end_) abandon();
        if (static_cast<unsigned char>(*at_) < 0x80) break;
        const std::size_t length = utf8SequenceLength(at_, end_);
        if (length == 0) abandon();
        at_ += length;
    }
    if (*at_ == '"') return std::string_view(start, static_cast<std::size_t>(at_++ - start));
    if (*at_ != '\\') abandon(); // a raw control character
    return escapedString(start);
}

std::string_view QuickScanner::escapedString(const char* start) {
    scratch_.assign(start, at_);
    while (at_ != end_) {
        const char c = *at_++;
        if (c == '"') return scratch_;
        if (static_cast<unsigned char>(c) < 0x20) abandon();
        if (static_cast<unsigned char>(c) >= 0x80) {
            const std::size_t length = utf8SequenceLength(at_ - 1, end_);
            if (length == 0) abandon();
            scratch_.append(at_ - 1, length);
            at_ += length - 1;
            continue;
        }
        if (c != '\\') {
            scratch_ += c;
            continue;
        }
        if (at_ == end_) abandon();
        switch (*at_++) {
        case '"': scratch_ += '"'; break;
        case '\\': scratch_ += '\\'; break;
        case '/': scratch_ += '/'; break;
        case 'b': scratch_ += '\b'; break;
        case 'f': scratch_ += '\f'; break;
        case 'n': scratch_ += '\n'; break;
        case 'r': scratch_ += '\r'; break;
        case 't': scratch_ += '\t'; break;
        default: abandon(); // \u and anything else: the tree reader's
        }
    }
    abandon();
}

Value QuickScanner::scalar() {
    const char first = peek();
    auto word = [&](std::string_view literal) {
        for (const char c : literal) {
            if (at_ == end_ || *at_ != c) abandon();
            ++at_;
        }
    };
    switch (first) {
    case '"': {
        const std::string_view text = string();
        return Value(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
    case 't': word("true"); return Value(true);
    case 'f': word("false"); return Value(false);
    case 'n': word("null"); return Value();
    default: break;
    }
    // -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?
    const char* start = at_;
    auto digits = [&] {
        const char* from = at_;
        while (at_ != end_ && isDigit(*at_)) ++at_;
        if (at_ == from) abandon();
    };
    if (at_ != end_ && *at_ == '-') ++at_;
    if (at_ != end_ && *at_ == '0') {
        ++at_;
    } else {
        digits();
    }
    if (at_ != end_ && *at_ == '.') {
        ++at_;
        digits();
    }
    if (at_ != end_ && (*at_ == 'e' || *at_ == 'E')) {
        ++at_;
        if (at_ != end_ && (*at_ == '+' || *at_ == '-')) ++at_;
        digits();
    }
    bool isWhole = false;
    std::int64_t whole = 0;
    double number = 0;
    const std::string_view literal(start, static_cast<std::size_t>(at_ - start));
    if (convertNumber(literal, isWhole, whole, number) != NumberFault::none) abandon();
    return isWhole ? Value(whole) : Value(number);
}

void quickRead(QuickContext& in, DurationValue& out) {
    double seconds = 0;
    QuickOneField<double> field{"seconds", seconds};
    quickRead(in, field);
    try {
        out = DurationValue::make(seconds);
    } catch (const ShowValueError&) {
        QuickScanner::abandon();
    }
}

void quickRead(QuickContext& in, std::map<std::string, std::string>& out) {
    in.scanner.expect('{');
    out.clear();
    if (in.scanner.take('}')) return;
    do {
        std::string key(in.scanner.string());
        in.scanner.expect(':');
        std::string element;
        quickRead(in, element);
        out.insert_or_assign(std::move(key), std::move(element));
    } while (in.scanner.take(','));
    in.scanner.expect('}');
}

} // namespace velarion::showcore::json
