// What a song says in words: its lyrics as text, its credits line, the short
// section codes and the sung order written with them.

#include "LiveModel/AsciiCase.h"
#include "LiveModel/Song.h"

#include <unordered_set>

namespace velarion {

namespace {

bool isOrderSeparator(char c) {
    return c == ' ' || c == ',' || c == '\n' || c == '\t' || c == '\r';
}

// The first character of a word, ASCII letters in upper case; a UTF-8
// character of several bytes is taken whole.
std::string firstLetter(std::string_view word) {
    const auto lead = static_cast<unsigned char>(word.front());
    if (lead < 0x80)
        return std::string(1, asciiUpper(word.front()));
    std::size_t length = 1;
    while (length < word.size() && length < 4 &&
           (static_cast<unsigned char>(word[length]) & 0xC0) == 0x80) {
        ++length;
    }
    return std::string(word.substr(0, length));
}

// The code before it is made unique: first letters of the words that aren't
// numbers, then the number the last word ends in. "Pre-Chorus" gives PC,
// "Verse 2" V2.
std::string baseCode(std::string_view name) {
    std::vector<std::string_view> words;
    std::size_t at = 0;
    while (at < name.size()) {
        const auto isSplit = [](char c) { return c == ' ' || c == '\t' || c == '-'; };
        while (at < name.size() && isSplit(name[at]))
            ++at;
        const std::size_t start = at;
        while (at < name.size() && !isSplit(name[at]))
            ++at;
        if (at > start)
            words.push_back(name.substr(start, at - start));
    }
    std::string code;
    for (std::string_view word : words) {
        if (!isAllDigits(word))
            code += firstLetter(word);
    }
    if (words.empty())
        return code;
    std::string_view last = words.back();
    std::size_t digits = last.size();
    while (digits > 0 && isAsciiDigit(last[digits - 1]))
        --digits;
    std::string_view number = last.substr(digits);
    while (number.size() > 1 && number.front() == '0')
        number.remove_prefix(1);
    code += number;
    return code;
}

} // namespace

const SongSection* Song::section(const Uuid& id) const {
    for (const SongSection& candidate : sections) {
        if (candidate.id == id)
            return &candidate;
    }
    return nullptr;
}

std::vector<const SongSection*> Song::sungSections() const {
    std::unordered_map<Uuid, const SongSection*> byID;
    for (const SongSection& candidate : sections)
        byID.emplace(candidate.id, &candidate);
    std::vector<const SongSection*> sung;
    sung.reserve(order.size());
    for (const Uuid& id : order) {
        const auto found = byID.find(id);
        if (found != byID.end())
            sung.push_back(found->second);
    }
    return sung;
}

std::string Song::credits() const {
    std::string line;
    const auto add = [&](const std::string& part) {
        if (part.empty())
            return;
        if (!line.empty())
            line += " · ";
        line += part;
    };
    add(title);
    add(author);
    if (!copyright.empty())
        add(copyright.starts_with("©") ? copyright : "© " + copyright);
    if (!ccli.empty())
        add("CCLI Song # " + ccli);
    return line;
}

std::unordered_map<Uuid, std::string> Song::codes() const {
    std::unordered_map<Uuid, std::string> result;
    std::unordered_set<std::string> taken;
    // The lowest free number only grows as codes are taken, so each base
    // resumes where it last stopped.
    std::unordered_map<std::string, int> nextNumber;
    for (const SongSection& candidate : sections) {
        std::string code = baseCode(candidate.name);
        const std::string key = asciiLowercased(code);
        if (taken.contains(key)) {
            int& number = nextNumber.try_emplace(key, 2).first->second;
            while (taken.contains(key + std::to_string(number)))
                ++number;
            code += std::to_string(number);
            ++number;
        }
        taken.insert(asciiLowercased(code));
        result.emplace(candidate.id, std::move(code));
    }
    return result;
}

std::string Song::orderText() const {
    const std::unordered_map<Uuid, std::string> sectionCodes = codes();
    std::string text;
    for (const Uuid& id : order) {
        const auto code = sectionCodes.find(id);
        if (code == sectionCodes.end())
            continue;
        if (!text.empty())
            text += ' ';
        text += code->second;
    }
    return text;
}

std::vector<std::string> Song::setOrder(std::string_view fromText) {
    std::unordered_map<std::string, Uuid> byCode;
    for (const auto& [id, code] : codes())
        byCode.emplace(asciiLowercased(code), id);
    std::unordered_map<std::string, Uuid> byName;
    for (const SongSection& candidate : sections) {
        std::string squeezed;
        for (char c : candidate.name) {
            if (c != ' ' && c != '\t')
                squeezed += asciiLower(c);
        }
        byName.emplace(std::move(squeezed), candidate.id);
    }

    std::vector<Uuid> newOrder;
    std::vector<std::string> unknown;
    std::size_t at = 0;
    while (at < fromText.size()) {
        while (at < fromText.size() && isOrderSeparator(fromText[at]))
            ++at;
        const std::size_t start = at;
        while (at < fromText.size() && !isOrderSeparator(fromText[at]))
            ++at;
        if (at == start)
            continue;
        const std::string_view word = fromText.substr(start, at - start);
        const std::string key = asciiLowercased(word);
        if (const auto code = byCode.find(key); code != byCode.end()) {
            newOrder.push_back(code->second);
        } else if (const auto name = byName.find(key); name != byName.end()) {
            newOrder.push_back(name->second);
        } else {
            unknown.emplace_back(word);
        }
    }
    order = std::move(newOrder);
    return unknown;
}

std::string Song::text() const {
    std::string out;
    const auto detail = [&](std::string_view label, const std::string& value) {
        if (value.empty())
            return;
        out += label;
        out += value;
        out += '\n';
    };
    detail("Title: ", title);
    detail("Author: ", author);
    detail("Copyright: ", copyright);
    detail("CCLI: ", ccli);

    std::unordered_set<Uuid> written;
    // Parsing resolves a heading alone to the last section made under that
    // name, so a repeat is written alone only where it resolves to itself.
    std::unordered_map<std::string, Uuid> lastMadeByName;
    for (const SongSection* sung : sungSections()) {
        if (!out.empty())
            out += '\n';
        out += '[';
        out += sung->name;
        out += "]\n";
        const std::string key = asciiLowercased(sung->name);
        const auto lastMade = lastMadeByName.find(key);
        const bool repeat = written.contains(sung->id) && lastMade != lastMadeByName.end() &&
                            lastMade->second == sung->id;
        if (!repeat && !sung->text.empty()) {
            out += sung->text;
            out += '\n';
        }
        if (written.insert(sung->id).second)
            lastMadeByName[key] = sung->id;
    }
    return out;
}

} // namespace velarion
