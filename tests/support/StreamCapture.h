#pragma once

#include <ostream>
#include <sstream>
#include <string>

/// Captures the text written to a stream while it lives.
class StreamCapture {
public:
    explicit StreamCapture(std::ostream& captured)
        : stream(captured), former(captured.rdbuf(text_.rdbuf())) {}
    ~StreamCapture() { stream.rdbuf(former); }
    StreamCapture(StreamCapture const&) = delete;
    StreamCapture& operator=(StreamCapture const&) = delete;

    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::ostream& stream;
    std::streambuf* former;
};
