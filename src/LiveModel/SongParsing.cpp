// Song::parsing: pasted lyrics to sections, sung order and credits.
//
// Lyrics arrive from anywhere: song sheets, web pages, word processors. The
// parser accepts any text and does one pass over its lines, then one over the
// blocks it found; every lookup is by hash, so the time stays linear in the
// text however it is laid out.

#include "LiveModel/AsciiCase.h"
#include "LiveModel/Song.h"
#include "LiveModel/TextTrimming.h"

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_map>

namespace velarion {

namespace {

// The words that make a bare line a heading, when nothing else stands on it
// but a number.
constexpr std::array<std::string_view, 16> headingWords = {
    "verse", "chorus", "pre-chorus", "prechorus", "pre chorus",   "bridge", "intro", "outro",
    "tag",   "ending", "refrain",    "interlude", "instrumental", "hook",   "vamp",  "coda"};

// Heading words are one or two words; a number may follow.
constexpr std::size_t maxHeadingWords = 3;

enum class DetailKind { title, author, copyright, ccli };

struct DetailKey {
    std::string_view key;
    DetailKind kind;
};

constexpr std::array<DetailKey, 7> detailKeys = {{{"title", DetailKind::title},
                                                  {"author", DetailKind::author},
                                                  {"artist", DetailKind::author},
                                                  {"writer", DetailKind::author},
                                                  {"writers", DetailKind::author},
                                                  {"copyright", DetailKind::copyright},
                                                  {"©", DetailKind::copyright}}};

struct Detail {
    DetailKind kind;
    std::string value;
};

// "Title: …", "© = …", "CCLI Song # 1234567" and their like; none for any
// other line. A CCLI line holds the song number's digits wherever they
// stand; one without digits is sung words.
std::optional<Detail> detailLine(std::string_view line) {
    if (line.size() >= 4 && equalsIgnoringAsciiCase(line.substr(0, 4), "ccli")) {
        std::string digits;
        for (char c : line) {
            if (isAsciiDigit(c))
                digits += c;
        }
        if (digits.empty())
            return std::nullopt;
        return Detail{DetailKind::ccli, std::move(digits)};
    }
    const auto found =
        std::find_if(line.begin(), line.end(), [](char c) { return c == ':' || c == '='; });
    if (found == line.end())
        return std::nullopt;
    const auto separator = static_cast<std::size_t>(found - line.begin());
    const std::string key = trimmingWhitespace(line.substr(0, separator));
    const auto known =
        std::find_if(detailKeys.begin(), detailKeys.end(), [&](const DetailKey& detail) {
            return equalsIgnoringAsciiCase(detail.key, key);
        });
    if (known == detailKeys.end())
        return std::nullopt;
    std::string value = trimmingWhitespace(line.substr(separator + 1));
    if (value.empty())
        return std::nullopt;
    return Detail{known->kind, std::move(value)};
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

// Trimmed of white space, Unicode's included; most lines have none at their
// ends, and those are taken as they are without looking further.
std::string trimmedLine(std::string_view line) {
    const auto plain = [](char c) {
        return static_cast<unsigned char>(c) < 0x80 && c > ' ' && c != '\x7F';
    };
    if (!line.empty() && plain(line.front()) && plain(line.back()))
        return std::string(line);
    return trimmingWhitespace(line);
}

// The section name a heading line gives, or none for a lyric line.
std::optional<std::string> headingName(std::string_view line) {
    if (line.size() >= 3 && line.front() == '[' && line.back() == ']') {
        std::string inside = trimmingWhitespace(line.substr(1, line.size() - 2));
        if (inside.empty())
            return std::nullopt;
        return inside;
    }
    if (line.ends_with(':'))
        line.remove_suffix(1);
    // Split at blanks, giving up at the fourth word so that a long lyric
    // line costs no more than a glance.
    std::array<std::string_view, maxHeadingWords> words;
    std::size_t count = 0;
    std::size_t at = 0;
    while (at < line.size()) {
        while (at < line.size() && isBlank(line[at]))
            ++at;
        if (at == line.size())
            break;
        if (count == maxHeadingWords)
            return std::nullopt;
        const std::size_t start = at;
        while (at < line.size() && !isBlank(line[at]))
            ++at;
        words[count++] = line.substr(start, at - start);
    }
    if (count == 0)
        return std::nullopt;
    const std::size_t checked = isAllDigits(words[count - 1]) ? count - 1 : count;
    std::string phrase;
    for (std::size_t i = 0; i < checked; ++i) {
        if (i > 0)
            phrase += ' ';
        phrase += words[i];
    }
    const auto isPhrase = [&](std::string_view word) {
        return equalsIgnoringAsciiCase(word, phrase);
    };
    if (std::none_of(headingWords.begin(), headingWords.end(), isPhrase))
        return std::nullopt;
    std::string name;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0)
            name += ' ';
        name += asciiUpper(words[i].front());
        name += asciiLowercased(words[i].substr(1));
    }
    return name;
}

// Every CR LF, then every lone CR, becomes a LF.
std::string withLineFeeds(std::string_view text) {
    std::string normalised;
    normalised.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            normalised += text[i];
            continue;
        }
        normalised += '\n';
        if (i + 1 < text.size() && text[i + 1] == '\n')
            ++i;
    }
    return normalised;
}

struct Block {
    std::optional<std::string> name;
    std::vector<std::string> lines;
};

// Runs of blank lines become one, with none at either end; the lines then
// make the block's text.
std::string tidiedText(const std::vector<std::string>& lines) {
    std::size_t end = lines.size();
    while (end > 0 && lines[end - 1].empty())
        --end;
    std::string text;
    bool previousBlank = true; // drops a leading blank
    for (std::size_t i = 0; i < end; ++i) {
        const bool blank = lines[i].empty();
        if (blank && previousBlank)
            continue;
        if (!text.empty())
            text += '\n';
        text += lines[i];
        previousBlank = blank;
    }
    return text;
}

struct Details {
    std::string title;
    std::string author;
    std::string copyright;
    std::string ccli;

    void store(Detail detail) {
        switch (detail.kind) {
        case DetailKind::title:
            title = std::move(detail.value);
            break;
        case DetailKind::author:
            author = std::move(detail.value);
            break;
        case DetailKind::copyright:
            copyright = std::move(detail.value);
            break;
        case DetailKind::ccli:
            ccli = std::move(detail.value);
            break;
        }
    }
};

struct Blocks {
    std::vector<Block> blocks;
    Details details;
};

// Lines to named and unnamed blocks. Before any heading blank lines divide
// blocks; under a heading they stay in the section as slide breaks.
Blocks readBlocks(std::string_view text) {
    Blocks read;
    Block current;
    bool headingSeen = false;
    const auto close = [&] {
        read.blocks.push_back(std::move(current));
        current = Block{};
    };
    const std::string normalised = withLineFeeds(text);
    const std::string_view all = normalised;
    std::size_t start = 0;
    while (start <= all.size()) {
        const std::size_t end = std::min(all.find('\n', start), all.size());
        std::string line = trimmedLine(all.substr(start, end - start));
        start = end + 1;
        if (std::optional<Detail> detail = detailLine(line)) {
            read.details.store(std::move(*detail));
        } else if (std::optional<std::string> name = headingName(line)) {
            if (current.name || !current.lines.empty())
                close();
            current.name = std::move(name);
            headingSeen = true;
        } else if (line.empty() && current.lines.empty()) {
            continue;
        } else if (line.empty() && !headingSeen && !current.name) {
            close();
        } else {
            current.lines.push_back(std::move(line));
        }
    }
    // A heading alone at the very end still repeats its section.
    if (current.name || !current.lines.empty())
        close();
    return read;
}

bool endsWithDigit(std::string_view text) {
    return !text.empty() && isAsciiDigit(text.back());
}

// Sections and sung order from the blocks; see Song::parsing.
class SectionBuilder {
public:
    explicit SectionBuilder(Song& song) : song_(song) {}

    void add(const Block& block, const std::string& text,
             const std::unordered_map<std::string, int>& unnamedCounts) {
        if (block.name) {
            addNamed(*block.name, text);
        } else if (!text.empty()) {
            addUnnamed(text, unnamedCounts.at(text));
        }
    }

    // Sections that share a name in any case (one heading over different
    // words) are numbered in order, unless the name already ends in a digit.
    void numberSharedNames() {
        for (const auto& [key, indices] : byName_) {
            if (indices.size() < 2)
                continue;
            int counter = 1;
            for (std::size_t index : indices) {
                std::string& name = song_.sections[index].name;
                if (endsWithDigit(name))
                    continue;
                name += ' ' + std::to_string(counter++);
            }
        }
    }

private:
    void addNamed(const std::string& name, const std::string& text) {
        const std::string key = asciiLowercased(name);
        if (text.empty()) {
            // A heading with no words repeats the last section of its name.
            const auto named = byName_.find(key);
            if (named != byName_.end())
                sing(named->second.back());
            return;
        }
        const auto same = byNameAndText_.find(key + '\0' + text);
        if (same != byNameAndText_.end()) {
            sing(same->second);
            return;
        }
        create(name, text);
    }

    // Without a heading a block sung more than once is a chorus and any
    // other a verse, each numbered on its own.
    void addUnnamed(const std::string& text, int count) {
        const auto same = byText_.find(text);
        if (same != byText_.end()) {
            sing(same->second);
        } else if (count > 1) {
            ++choruses_;
            create(choruses_ == 1 ? "Chorus" : "Chorus " + std::to_string(choruses_), text);
        } else {
            create("Verse " + std::to_string(++verses_), text);
        }
    }

    void create(std::string name, const std::string& text) {
        const std::size_t index = song_.sections.size();
        const std::string key = asciiLowercased(name);
        song_.sections.push_back({Uuid::random(), std::move(name), text});
        byName_[key].push_back(index);
        byNameAndText_.emplace(key + '\0' + text, index);
        byText_.emplace(text, index);
        sing(index);
    }

    void sing(std::size_t index) { song_.order.push_back(song_.sections[index].id); }

    Song& song_;
    std::unordered_map<std::string, std::vector<std::size_t>> byName_;
    std::unordered_map<std::string, std::size_t> byNameAndText_;
    std::unordered_map<std::string, std::size_t> byText_;
    int choruses_ = 0;
    int verses_ = 0;
};

} // namespace

Song Song::parsing(std::string_view text, LyricLook look, int linesPerSlide) {
    Blocks read = readBlocks(text);
    std::vector<std::string> texts;
    texts.reserve(read.blocks.size());
    std::unordered_map<std::string, int> unnamedCounts;
    for (const Block& block : read.blocks) {
        texts.push_back(tidiedText(block.lines));
        if (!block.name)
            ++unnamedCounts[texts.back()];
    }

    Song song;
    SectionBuilder builder(song);
    for (std::size_t i = 0; i < read.blocks.size(); ++i) {
        builder.add(read.blocks[i], texts[i], unnamedCounts);
    }
    builder.numberSharedNames();

    song.title = std::move(read.details.title);
    song.author = std::move(read.details.author);
    song.copyright = std::move(read.details.copyright);
    song.ccli = std::move(read.details.ccli);
    song.look = look;
    song.linesPerSlide = std::clamp(linesPerSlide, minLinesPerSlide, maxLinesPerSlide);
    song.showsCredits = true;
    return song;
}

} // namespace velarion
