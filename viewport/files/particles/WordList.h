#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vellum::viewport {

/// The words of a column, each once, in the order of their first occurrence. The texts of the words must live
/// as long as the list.
class WordList {
public:
    /// The word's place; a word that is new becomes the last one.
    std::uint32_t indexOf(std::string_view word) {
        // A column has a few kinds, or a name for each particle.
        std::uint64_t const key = _keyOf(word);
        std::size_t const near = std::min(words.size(), FEW);
        for (std::size_t i = 0; i < near; ++i) {
            if (keys[i] == key && (word.size() < sizeof key || words[i] == word)) {
                return static_cast<std::uint32_t>(i);
            }
        }
        if (words.size() < FEW) {
            keys[words.size()] = key;
            return _add(word);
        }
        return _find(word);
    }

    /// The words as the text has them.
    std::vector<std::string_view> const& all() const { return words; }

    /// Two quotes of a word, as tables have them within quotes, become one.
    std::vector<std::string> texts() const {
        std::vector<std::string> texts(words.begin(), words.end());
        for (std::string& text : texts) {
            for (std::size_t at = text.find("\"\""); at != std::string::npos;
                 at = text.find("\"\"", at + 1)) {
                text.erase(at, 1);
            }
        }
        return texts;
    }

private:
    static constexpr std::size_t FEW = 8;

    /// The size and the first bytes: different for different words of up to seven bytes.
    static std::uint64_t _keyOf(std::string_view word) {
        std::uint64_t key = word.size();
        std::size_t const count = std::min<std::size_t>(word.size(), 7);
        for (std::size_t i = 0; i < count; ++i) {
            key = key << 8 | static_cast<unsigned char>(word[i]);
        }
        return key;
    }

    std::uint32_t _add(std::string_view word) {
        words.push_back(word);
        return static_cast<std::uint32_t>(words.size() - 1);
    }

    std::uint32_t _find(std::string_view word) {
        auto const [place, isNew] = places.try_emplace(word, static_cast<std::uint32_t>(words.size()));
        return isNew ? _add(word) : place->second;
    }

    std::vector<std::string_view> words;
    std::uint64_t keys[FEW] = {};                                // of the first few
    std::unordered_map<std::string_view, std::uint32_t> places;  // of the words behind the first few
};

}  // namespace vellum::viewport
