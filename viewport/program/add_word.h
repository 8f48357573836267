#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace vellum::viewport {

/// Adds an option that takes a word to a command line. A word given and empty (--size "") is a mistake, not
/// the absence of the option. \param word std::string, or a list of them; must outlive the parsing \param
/// type stands for the word in the help
template <class Word>
CLI::Option* addWord(CLI::App& app, std::string const& name, Word& word, std::string const& meaning,
                     std::string const& type) {
    static CLI::Validator const given(
        [](std::string& text) { return text.empty() ? std::string("may not be empty") : std::string(); }, "");
    return app.add_option(name, word, meaning)->check(given)->type_name(type);
}

}  // namespace vellum::viewport
