#pragma once

#include "gl_spy.h"

#include <charconv>
#include <cstdio>

#include <GL/gl.h>

namespace gl_spy {

/// How many values a parameter takes: 4 for GL_AMBIENT, 3 for GL_SPOT_DIRECTION, 1 for most.
std::size_t parameterCount(GLenum parameter);

/// The text of a parameter's value that stands for an enum (`GL_REPEAT` for GL_TEXTURE_WRAP_S); empty when
/// the parameter takes a number, or the value is no enum that it could mean.
std::string parameterName(GLenum parameter, double value);

std::string primitiveName(GLenum mode);  ///< "GL_QUADS"
std::string factorName(GLenum factor);   ///< as enumName(), and "GL_ZERO" and "GL_ONE" for 0 and 1

/// Writes down the arguments of one call, in order.
class Notes {
public:
    explicit Notes(char const* name) { _call.name = name; }

    Call const& call() const { return _call; }

    template <class Number>
    void number(Number value) {
        _call.arguments.push_back(_text(value));
    }

    /// `count` values in braces, `null` for a null pointer.
    template <class Number>
    void numbers(Number const* values, std::size_t count) {
        if (!values) {
            address(nullptr);
            return;
        }
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            text += (i ? ", " : "") + _text(values[i]);
        }
        _call.arguments.push_back("{" + text + "}");
    }

    /// An enum, boolean or mask that is shown as the text.
    void enumeration(GLenum value, std::string const& text) {
        _call.enums.push_back(value);
        _call.arguments.push_back(text);
    }

    /// The value of the parameter noted last.
    template <class Number>
    void parameter(Number value) {
        std::string const name = parameterName(_lastEnum(), double(value));
        if (name.empty()) {
            number(value);
        } else {
            enumeration(static_cast<GLenum>(value), name);
        }
    }

    /// The values of the parameter noted last.
    template <class Number>
    void parameters(Number const* values) {
        std::string const name = values ? parameterName(_lastEnum(), double(values[0])) : "";
        if (name.empty()) {
            numbers(values, parameterCount(_lastEnum()));
        } else {
            enumeration(static_cast<GLenum>(values[0]), "{" + name + "}");
        }
    }

    /// A count that was noted last, for the array after it; 0 for a negative one.
    std::size_t lastCount() const {
        double const count = _call.numbers.empty() ? 0 : _call.numbers.back();
        return count > 0 ? std::size_t(count) : 0;
    }

    void address(void const* pointer) {
        _call.addresses.push_back(reinterpret_cast<std::uintptr_t>(pointer));
        _call.arguments.emplace_back(pointer ? "pointer" : "null");
    }

    /// Strings, in braces when they come as an array.
    void strings(std::vector<std::string> const& texts, bool isArray);

private:
    GLenum _lastEnum() const { return _call.enums.empty() ? 0 : _call.enums.back(); }

    template <class Number>
    std::string _text(Number value) {
        _call.numbers.push_back(double(value));
        char digits[64];
        // Characters are small numbers to GL, never letters; + makes them so.
        std::to_chars_result const end = std::to_chars(digits, digits + sizeof digits, +value);
        return std::string(digits, end.ptr);
    }

    Call _call;
};

}  // namespace gl_spy
