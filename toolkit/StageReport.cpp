#include "toolkit/StageReport.h"

#include "toolkit/internal/stage_file.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

namespace vellum::toolkit {

namespace {

// == Reading ==

bool isDigit(char letter) {
    return std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

std::string_view takeDigits(std::string_view& text) {
    std::size_t const end =
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
    std::string_view const digits = text.substr(0, end);
    text.remove_prefix(end);
    return digits;
}

bool take(std::string_view& text, std::string_view start) {
    if (text.substr(0, start.size()) != start) {
        return false;
    }
    text.remove_prefix(start.size());
    return true;
}

/// The next line off the front of the text, without its end.
std::string_view takeLine(std::string_view& text) {
    std::size_t const end = std::min(text.find('\n'), text.size());
    std::string_view const line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

StageMessage messageOf(std::string_view line) {
    StageMessage whole{0, std::string(line)};
    std::string kind;
    for (std::string_view const word : {"ERROR: ", "WARNING: "}) {
        if (take(line, word)) {
            kind = word;
        }
    }
    // First comes the number of the source string, which is always 0: a stage has one.
    if (takeDigits(line).empty() || line.empty()) {
        return whole;
    }
    bool const isInBrackets = line.front() == '(';
    if (!isInBrackets && line.front() != ':') {
        return whole;
    }
    line.remove_prefix(1);
    std::string_view const digits = takeDigits(line);
    int number = 0;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), number).ec != std::errc()) {
        return whole;
    }
    if (isInBrackets) {
        if (!take(line, ")")) {
            return whole;
        }
    } else if (take(line, "(")) {
        takeDigits(line);
        if (!take(line, ")")) {
            return whole;
        }
    }
    line.remove_prefix(std::min(line.find_first_not_of(" :"), line.size()));
    return {number, kind + std::string(line)};
}

// == Writing ==

std::string nameOf(StageReport const& report) {
    if (!report.file.empty()) {
        return report.file;
    }
    switch (report.stage) {
    case Stage::VERTEX:
        return "the vertex stage";
    case Stage::FRAGMENT:
        return "the fragment stage";
    case Stage::GEOMETRY:
        return "the geometry stage";
    default:
        return "the program of the stages";
    }
}

std::string replacementOf(StageReport const& report) {
    switch (report.replacement) {
    case StageReport::Replacement::PASS_THROUGH:
        return "a stage that passes everything on takes its place";
    case StageReport::Replacement::LEFT_OUT:
        return "it is left out";
    case StageReport::Replacement::ALL_STAGES:
        return report.stage == Stage::PROGRAM ? "stages that pass everything on take its place"
                                              : "such a stage takes its place, too";
    default:
        return "";
    }
}

std::string asLine(std::string text) {
    constexpr unsigned char FIRST_PRINTABLE = 0x20;
    constexpr unsigned char DELETE = 0x7F;
    std::replace_if(
        text.begin(), text.end(),
        [](char letter) {
            auto const code = static_cast<unsigned char>(letter);
            return code < FIRST_PRINTABLE || code == DELETE;
        },
        '?');
    return text + '\n';
}

}  // namespace

std::string toText(StageReport const& report) {
    std::string const name = nameOf(report);
    std::vector<std::string> lines;
    for (StageMessage const& message : report.messages) {
        lines.push_back(name + (message.line > 0 ? ":" + std::to_string(message.line) : "") + ": " +
                        message.text);
    }
    std::string const replacement = replacementOf(report);
    if (!replacement.empty()) {
        // The last of the driver's lines is one of many, and no clause that goes on.
        if (!report.log.empty()) {
            lines.push_back(name +
                            (report.stage == Stage::PROGRAM ? ": cannot be linked" : ": does not compile"));
        } else if (lines.empty()) {
            lines.push_back(name + ": cannot be used");
        }
        lines.back() += "; " + replacement;
    }
    std::string text;
    for (std::string const& line : lines) {
        text += asLine(line);
    }
    return text;
}

std::vector<StageMessage> readStageLog(std::string const& log) {
    std::vector<StageMessage> messages;
    std::string_view rest = log;
    while (!rest.empty()) {
        // Mesa separates its remarks on a program by full stops, and repeats them for each variable.
        std::string_view line = takeLine(rest);
        line.remove_prefix(std::min(line.find_first_not_of(" \t\r."), line.size()));
        line = line.substr(0, line.find_last_not_of(" \t\r\n\v\f") + 1);
        StageMessage message = messageOf(line);
        bool const isKnown =
            std::any_of(messages.begin(), messages.end(), [&message](StageMessage const& other) {
                return other.line == message.line && other.text == message.text;
            });
        if (!line.empty() && !isKnown) {
            messages.push_back(std::move(message));
        }
    }
    return messages;
}

std::optional<std::string> stageFileFault(std::string const& path) {
    StageFile file = readStageFile(path);
    return file.fault.empty() ? std::nullopt : std::optional<std::string>(std::move(file.fault));
}

}  // namespace vellum::toolkit
