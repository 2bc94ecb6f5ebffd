// The collation order: a strict weak order on any three texts, for both kinds of key, the same from
// characters, from views and from the keys that sorting uses.
#include <algorithm>
#include <array>
#include <string>

#include "fuzz/fuzz_target.h"
#include "text/lex.h"

namespace {

using namespace corvane;
using Texts = std::array<std::string, 3>;

int sign(int value) { return (value > 0 ? 1 : 0) - (value < 0 ? 1 : 0); }

// All three ways to compare, which have to agree.
int compare(const std::string& a, const std::string& b, LexOrder key) {
    const int order = lex_strcmp_coll(std::string_view(a), std::string_view(b), key);
    fuzz::require(order == sign(order), "a comparison gives -1, 0 or 1");
    fuzz::require(order == lex_strcmp_coll(a.c_str(), b.c_str(), key),
                  "texts without a zero compare as characters and as views");
    fuzz::require(order == sign(sortKey(a, key).compare(sortKey(b, key))),
                  "keys sort like the texts");
    return order;
}

void checkPair(const std::string& a, const std::string& b, LexOrder key) {
    fuzz::require(compare(a, a, key) == 0, "a text equals itself");
    fuzz::require(compare(a, b, key) == -compare(b, a, key), "exchanged texts, exchanged result");
}

// One of a < b < c, a == b == c or a mixture that must stay so for the outer two.
void checkTriple(const Texts& t, LexOrder key) {
    const int first = compare(t[0], t[1], key);
    const int second = compare(t[1], t[2], key);
    const int outer = compare(t[0], t[2], key);
    if (first <= 0 && second <= 0) {
        fuzz::require(outer <= 0, "the order is transitive");
        fuzz::require((outer == 0) == (first == 0 && second == 0), "so is being equal");
    }
}

void checkLetters(const std::string& text) {
    for (const char c : text) {
        const auto letter = static_cast<wchar_t>(static_cast<unsigned char>(c));
        fuzz::require(lex_lower(lex_lower(letter)) == lex_lower(letter), "lower case is final");
        fuzz::require(
            lex_coll(lex_lower(letter)) == lex_coll(letter) || lex_lower(letter) != letter,
            "only letters that change change their place");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string bytes(fuzz::asText(data, size));
    std::erase(bytes, '\0');
    fuzz::Input input(bytes);
    Texts texts;
    for (std::string& text : texts) {
        text = input.field('\n');
    }
    std::sort(texts.begin(), texts.end());
    for (const LexOrder key : {lex_coll, lex_icoll}) {
        do {
            checkPair(texts[0], texts[1], key);
            checkTriple(texts, key);
        } while (std::next_permutation(texts.begin(), texts.end()));
    }
    checkLetters(texts[0]);
    return 0;
}
