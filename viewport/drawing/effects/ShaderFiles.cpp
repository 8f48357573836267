#include "viewport/drawing/effects/ShaderFiles.h"

#include "viewport/text/Words.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

constexpr off_t LARGEST_FILE = 1 << 20;

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

/// The file's bytes, at most `size` of them; nothing where reading fails, and then errno says why.
std::optional<std::string> readAll(int descriptor, std::size_t size) {
    std::string text(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        ssize_t const count = ::read(descriptor, text.data() + filled, size - filled);
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    text.resize(filled);
    return text;
}

/// A line of a log in its parts.
struct LogLine {
    std::string number;  // of the line that it is about; empty when it names none
    std::string message;
};

LogLine split(std::string_view line) {
    LogLine whole{"", std::string(line)};
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
    std::string const number(takeDigits(line));
    if (number.empty()) {
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

}  // namespace

std::optional<Fault> shaderFileFault(std::string const& path) {
    // Without O_NONBLOCK a named pipe would be waited for.
    int const descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return Fault{path, std::string("cannot be opened: ") + std::strerror(errno)};
    }
    struct stat status {};
    bool const isPlain = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    std::optional<std::string> text;
    if (isPlain && status.st_size <= LARGEST_FILE) {
        text = readAll(descriptor, static_cast<std::size_t>(status.st_size));
    }
    int const readError = errno;
    ::close(descriptor);
    if (!isPlain) {
        return Fault{path, "is not a plain file"};
    }
    if (status.st_size > LARGEST_FILE) {
        return Fault{path, "is too large for the text of a stage (1 MiB)"};
    }
    if (!text) {
        return Fault{path, std::string("cannot be read: ") + std::strerror(readError)};
    }
    if (text->find_first_not_of(BLANKS) == std::string::npos) {
        return Fault{path, "is empty"};
    }
    if (text->find('\0') != std::string::npos) {
        return Fault{path, "is not a text"};
    }
    return std::nullopt;
}

std::vector<Fault> shaderFaults(std::string const& file, std::string const& log) {
    std::vector<Fault> faults;
    std::string_view rest = log;
    while (!rest.empty()) {
        // Mesa separates its remarks on a program by full stops, and repeats them for each variable.
        std::string_view line = takeLine(rest);
        line.remove_prefix(std::min(line.find_first_not_of(" \t\r."), line.size()));
        line = line.substr(0, line.find_last_not_of(BLANKS) + 1);
        LogLine const parts = split(line);
        Fault const fault{parts.number.empty() ? file : file + ":" + parts.number, parts.message};
        bool const isKnown = std::any_of(faults.begin(), faults.end(), [&fault](Fault const& other) {
            return other.file == fault.file && other.message == fault.message;
        });
        if (!line.empty() && !isKnown) {
            faults.push_back(fault);
        }
    }
    return faults;
}

}  // namespace vellum::viewport
