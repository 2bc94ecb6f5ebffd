// UTF-8 decoding and the code set conversions against a decoder of their own.
#include <string>
#include <vector>

#include "fuzz/fuzz_target.h"
#include "text/code_sets.h"
#include "text/strconv.h"

namespace {

using namespace corvane;

// Characters of at most three bytes; anything else is left out, byte by byte.
std::vector<wchar_t> decoded(std::string_view text) {
    std::vector<wchar_t> characters;
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = [&](std::size_t i) {
            return static_cast<unsigned>(static_cast<unsigned char>(text[at + i]));
        };
        const unsigned lead = byte(0);
        const std::size_t left = text.size() - at;
        std::size_t used = 1;
        if (lead < 0x80) {
            characters.push_back(static_cast<wchar_t>(lead));
        } else if (lead >= 0xC0 && lead < 0xE0 && left >= 2) {
            characters.push_back(static_cast<wchar_t>((lead - 0xC0) * 64 + byte(1) % 64));
            used = 2;
        } else if (lead >= 0xE0 && lead < 0xF0 && left >= 3) {
            characters.push_back(
                static_cast<wchar_t>((lead - 0xE0) * 4096 + byte(1) % 64 * 64 + byte(2) % 64));
            used = 3;
        }
        at += used;
    }
    return characters;
}

void checkDecoding(std::string_view text) {
    std::vector<wchar_t> found;
    for (std::string_view rest = text; !rest.empty();) {
        wchar_t c = 0;
        const std::size_t used = strconv::utf8char2wchar(rest, c);
        fuzz::require(used <= rest.size() && used <= 3, "a character has at most three bytes");
        if (used > 0) {
            found.push_back(c);
        }
        rest.remove_prefix(used > 0 ? used : 1);
    }
    fuzz::require(found == decoded(text), "UTF-8 is decoded as it is defined");
}

void checkEncoding(std::string_view text) {
    std::vector<wchar_t> characters = decoded(text);
    std::erase(characters, L'\0');  // ends a string of characters
    const std::wstring terminated(characters.begin(), characters.end());
    const std::string encoded = strconv::ucs22utf8(terminated.c_str());
    fuzz::require(encoded.size() == strconv::utf8size(terminated.c_str()),
                  "utf8size tells the size of the encoded form");
    fuzz::require(decoded(encoded) == characters, "what was encoded decodes to the same");
    fuzz::require(strconv::utf8len(encoded.c_str()) == characters.size(),
                  "utf8len counts the characters");
}

void checkCodeSets(std::string_view text) {
    const std::size_t characters = decoded(text).size();
    const std::string terminated(text);
    for (int to = strconv::UTF8; to <= strconv::TABLE_COUNT; ++to) {
        const std::string local = strconv::str2str(text, strconv::UTF8, to);
        fuzz::require(to == strconv::UTF8 ? local == text : local.size() == characters,
                      "a single-byte code set has one byte for each character");
        for (int from = 0; from < strconv::TABLE_COUNT; ++from) {
            const std::string converted = strconv::str2str(text, from, to);
            fuzz::require(to == strconv::UTF8 ? decoded(converted).size() == text.size()
                                              : converted.size() == text.size(),
                          "no byte of a single-byte code set is lost");
        }
        strconv::str2str(terminated.c_str(), strconv::UTF8, to);
    }
    fuzz::require(strconv::utf82acs(terminated) == text && strconv::acs2utf8(terminated) == text,
                  "the active code set is UTF-8");
    strconv::strcodes(text);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::asText(data, size);
    checkDecoding(text);
    checkEncoding(text);
    checkCodeSets(text);
    return 0;
}
