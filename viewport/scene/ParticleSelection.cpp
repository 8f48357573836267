#include "viewport/scene/ParticleSelection.h"

#include "viewport/scene/ParticleKinds.h"
#include "viewport/scene/Quantity.h"
#include "viewport/text/data_numbers.h"
#include "viewport/text/joined.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <utility>

#include <muParser.h>

namespace vellum::viewport {

namespace {

constexpr std::size_t BLOCK = 16384;  // particles that are looked at together

bool isNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool isNamePart(char c) {
    return isNameStart(c) || isDigit(c) || c == '.';
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::size_t endOfNumber(std::string const& text, std::size_t at) {
    while (at < text.size() && (isDigit(text[at]) || text[at] == '.')) {
        ++at;
    }
    std::size_t exponent = at;
    if (exponent < text.size() && (text[exponent] == 'e' || text[exponent] == 'E')) {
        ++exponent;
        exponent += exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-') ? 1 : 0;
        if (exponent < text.size() && isDigit(text[exponent])) {
            at = exponent;
            while (at < text.size() && isDigit(text[at])) {
                ++at;
            }
        }
    }
    return at;
}

/// Also the brackets that follow, as in "c_stress[3]".
std::size_t endOfName(std::string const& text, std::size_t at) {
    while (at < text.size() && isNamePart(text[at])) {
        ++at;
    }
    if (at < text.size() && text[at] == '[') {
        std::size_t const close = text.find(']', at);
        return close != std::string::npos ? close + 1 : at;
    }
    return at;
}

double isNot(double value) {
    return value == 0 ? 1 : 0;
}

constexpr char NOT_OF_WORDS[] = "~";

void defineOperators(mu::Parser& parser) {
    // As in other languages "!" holds for what follows at once, the word for the comparison behind it.
    constexpr int BELOW_COMPARISONS = 3;
    static_assert(BELOW_COMPARISONS > mu::prLAND && BELOW_COMPARISONS < mu::prCMP);
    parser.DefineInfixOprt("!", isNot);
    parser.DefineInfixOprt(NOT_OF_WORDS, isNot, BELOW_COMPARISONS);
    parser.DefineOprt("%", static_cast<double (*)(double, double)>(std::fmod), mu::prMUL_DIV);
}

/// Where one number of each particle comes from.
using Source = std::function<double(std::size_t)>;

/// Whether the label of a particle is the text.
std::optional<Source> matchOfLabels(ParticleFrame const& frame, std::string const& name,
                                    std::string const& text) {
    ParticleLabels const* labels = frame.label(name);
    if (labels == nullptr && name == ParticleKinds::ELEMENT && frame.channel(name) == nullptr) {
        labels = frame.elements();
    }
    if (labels == nullptr) {
        return std::nullopt;
    }
    bool const isExact = std::find(labels->words.begin(), labels->words.end(), text) != labels->words.end();
    // Of elements any way to write them will do.
    Element const* const element = labels->areElements && !isExact ? findElement(text) : nullptr;
    auto isMatch = std::make_shared<std::vector<char>>();
    for (std::string const& word : labels->words) {
        isMatch->push_back(word == text || (element != nullptr && findElement(word) == element) ? 1 : 0);
    }
    return [labels, isMatch](std::size_t i) { return static_cast<double>((*isMatch)[labels->indices[i]]); };
}

/// Whether the particle's type has that name in the file.
std::optional<Source> matchOfTypes(ParticleFrame const& frame, std::string const& name,
                                   std::string const& text) {
    bool const areElements = name == ParticleKinds::ELEMENT;
    ParticleChannel const* const types = frame.channel(ParticleKinds::TYPE);
    if ((!areElements && name != ParticleKinds::TYPE) || frame.typeNames.empty() || types == nullptr) {
        return std::nullopt;
    }
    std::vector<double> numbers;
    for (auto const& [number, word] : frame.typeNames) {
        if (word == text ||
            (areElements && findElement(text) != nullptr && findElement(word) == findElement(text))) {
            numbers.push_back(static_cast<double>(number));
        }
    }
    return [types, numbers](std::size_t i) {
        return std::find(numbers.begin(), numbers.end(), types->values[i]) != numbers.end() ? 1.0 : 0.0;
    };
}

std::string reasonOf(mu::ParserError const& error) {
    switch (error.GetCode()) {
    case mu::ecUNEXPECTED_EOF:
        return "ends too early";
    case mu::ecMISSING_PARENS:
        return "lacks a ')'";
    case mu::ecUNEXPECTED_PARENS:
        return "has an unexpected parenthesis";
    case mu::ecUNEXPECTED_OPERATOR:
        return "has an unexpected operator";
    case mu::ecUNEXPECTED_VAL:
    case mu::ecUNEXPECTED_VAR:
    case mu::ecUNEXPECTED_FUN:
        return "lacks an operator";
    case mu::ecUNEXPECTED_ARG:
    case mu::ecUNEXPECTED_ARG_SEP:
        return "has an unexpected ','";
    case mu::ecTOO_MANY_PARAMS:
        return "has too many arguments of a function";
    case mu::ecTOO_FEW_PARAMS:
        return "has too few arguments of a function";
    case mu::ecUNEXPECTED_CONDITIONAL:
    case mu::ecMISSING_ELSE_CLAUSE:
    case mu::ecMISPLACED_COLON:
        return "has an incomplete 'c ? a : b'";
    case mu::ecUNASSIGNABLE_TOKEN:
        return "has an unknown function or sign";
    default:
        return "is not understood";
    }
}

}  // namespace

/// The expression for one frame: names are replaced by variables.
struct ParticleSelection::Program {
    std::string text;
    std::vector<std::size_t> places;  // in the expression, of each character of the text
    std::vector<Source> sources;      // of the variables v0, v1, ...
};

Fault ParticleSelection::_fault(std::string const& what, std::size_t place) const {
    return {"", "the selection '" + expression + "' " + what + " at character " +
                    std::to_string(std::min(place, expression.size()) + 1)};
}

Result<ParticleSelection> ParticleSelection::parse(std::string const& expression) {
    ParticleSelection selection;
    selection.expression = expression;
    if (std::optional<Fault> const fault = selection._read()) {
        return *fault;
    }
    Result<Program> const program = selection._compile(nullptr, nullptr);
    return program.isOk() ? Result<ParticleSelection>(selection) : Result<ParticleSelection>(program.fault());
}

std::optional<Fault> ParticleSelection::_read() {
    std::string const& text = expression;
    int depth = 0;
    for (std::size_t at = 0; at < text.size();) {
        char const c = text[at];
        std::size_t const start = at;
        if (isBlank(c)) {
            ++at;
        } else if (isDigit(c) || (c == '.' && at + 1 < text.size() && isDigit(text[at + 1]))) {
            at = endOfNumber(text, at);
            tokens.push_back({Kind::OTHER, text.substr(start, at - start), start});
        } else if (c == '`' || c == '"' || c == '\'') {
            std::size_t const close = text.find(c, at + 1);
            if (close == std::string::npos) {
                return _fault("has a quote without its end", start);
            }
            at = close + 1;
            tokens.push_back(
                {c == '`' ? Kind::NAME : Kind::TEXT, text.substr(start + 1, close - start - 1), start});
        } else if (isNameStart(c)) {
            at = endOfName(text, at);
            std::string const name = text.substr(start, at - start);
            std::size_t const next = std::min(text.find_first_not_of(" \t\r\n", at), text.size());
            if (name == "and" || name == "or" || name == "not") {
                tokens.push_back({Kind::OTHER,
                                  name == "and"  ? "&&"
                                  : name == "or" ? "||"
                                                 : NOT_OF_WORDS,
                                  start});
            } else {
                bool const isFunction = next < text.size() && text[next] == '(';
                tokens.push_back({isFunction ? Kind::FUNCTION : Kind::NAME, name, start});
            }
        } else {
            std::string const two = text.substr(at, 2);
            bool const isTwo =
                two == "&&" || two == "||" || two == "==" || two == "!=" || two == "<=" || two == ">=";
            if (c == '=' && !isTwo) {
                return _fault("has a single '=' (equality is '==')", start);
            }
            if ((c == '&' || c == '|') && !isTwo) {
                return _fault(std::string("has a single '") + c + "' (write '" + c + c + "')", start);
            }
            if (std::string("&|=!<>+-*/^%()?:,").find(c) == std::string::npos) {
                return _fault("has an unexpected '" + std::string(1, c) + "'", start);
            }
            depth += c == '(' ? 1 : c == ')' ? -1 : 0;
            if (c == ',' && depth <= 0) {
                return _fault("has an unexpected ','", start);
            }
            at += isTwo ? 2 : 1;
            Kind const kind = two == "==" ? Kind::EQUAL : two == "!=" ? Kind::UNEQUAL : Kind::OTHER;
            tokens.push_back({kind, text.substr(start, at - start), start});
        }
    }
    return tokens.empty() ? std::optional<Fault>(_fault("is empty", 0)) : std::nullopt;
}

std::vector<std::string> ParticleSelection::names() const {
    std::vector<std::string> names;
    for (Token const& token : tokens) {
        if (token.kind == Kind::NAME) {
            names.push_back(token.text);
        }
    }
    return names;
}

/// \param frame null: any name will do
Result<ParticleSelection::Program> ParticleSelection::_compile(ParticleFrame const* frame,
                                                               ParticlePlaces const* places) const {
    Program program;
    auto const write = [&program](std::string const& text, std::size_t place) {
        program.text += text;
        program.places.resize(program.text.size(), place);
    };
    auto const variable = [&program](Source source) {
        program.sources.push_back(std::move(source));
        return "v" + std::to_string(program.sources.size() - 1);
    };
    auto const isComparison = [](Token const& token) {
        return token.kind == Kind::EQUAL || token.kind == Kind::UNEQUAL;
    };
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        Token const& token = tokens[i];
        if (i + 2 < tokens.size() && isComparison(tokens[i + 1]) &&
            (token.kind == Kind::TEXT || tokens[i + 2].kind == Kind::TEXT)) {
            Token const& name = token.kind == Kind::TEXT ? tokens[i + 2] : token;
            Token const& word = token.kind == Kind::TEXT ? token : tokens[i + 2];
            if (name.kind != Kind::NAME) {
                return _fault("compares a text with what is no name", word.place);
            }
            Source source = [](std::size_t) { return 0.0; };
            if (frame != nullptr) {
                std::optional<Source> match = matchOfLabels(*frame, name.text, word.text);
                match = match ? match : matchOfTypes(*frame, name.text, word.text);
                if (!match) {
                    bool const isKnown = Quantity::find(*frame, *places, name.text).has_value();
                    return Fault{frame->file,
                                 isKnown
                                     ? _fault("compares numbers with a text", word.place).message
                                     : _fault("has an unknown name '" + name.text + "'", name.place).message +
                                           " (there are: " + joined(Quantity::names(*frame)) + ")"};
                }
                source = *match;
            }
            std::string const text = variable(std::move(source));
            write(tokens[i + 1].kind == Kind::EQUAL ? text + " " : "(" + text + " == 0) ", token.place);
            i += 2;
            continue;
        }
        if (token.kind == Kind::TEXT) {
            return _fault("has a text that is not compared by '==' or '!='", token.place);
        }
        if (token.kind != Kind::NAME) {
            // The bracket of a function's arguments follows its name at once.
            write(token.kind == Kind::FUNCTION ? token.text : token.text + " ", token.place);
            continue;
        }
        Source source = [](std::size_t) { return 0.0; };
        if (frame != nullptr) {
            std::optional<Quantity> const quantity = Quantity::find(*frame, *places, token.text);
            if (!quantity && token.text == "pi") {
                write("_pi ", token.place);
                continue;
            }
            if (!quantity) {
                bool const areWords = frame->label(token.text) != nullptr;
                return Fault{frame->file,
                             areWords
                                 ? _fault("takes words of '" + token.text +
                                              "' for numbers (compare them with a "
                                              "text in quotes)",
                                          token.place)
                                       .message
                                 : _fault("has an unknown name '" + token.text + "'", token.place).message +
                                       " (there are: " + joined(Quantity::names(*frame)) + ")"};
            }
            source = [found = *quantity](std::size_t i) { return found[i]; };
        }
        write(variable(std::move(source)) + " ", token.place);
    }
    try {
        mu::Parser parser;
        defineOperators(parser);
        std::vector<double> values(program.sources.size(), 0);
        for (std::size_t i = 0; i < values.size(); ++i) {
            parser.DefineVar("v" + std::to_string(i), &values[i]);
        }
        parser.SetExpr(program.text);
        parser.Eval();
    } catch (mu::ParserError const& error) {
        auto const place = static_cast<std::size_t>(std::max(error.GetPos(), 0));
        return _fault(reasonOf(error),
                      place < program.places.size() ? program.places[place] : expression.size());
    }
    return program;
}

std::optional<Fault> ParticleSelection::apply(ParticleFrame const& frame, ParticlePlaces const& places,
                                              std::vector<unsigned int>& particles) const {
    Result<Program> const result = _compile(&frame, &places);
    if (!result.isOk()) {
        return result.fault();
    }
    Program const& program = result.value();
    std::vector<std::vector<double>> columns(program.sources.size(), std::vector<double>(BLOCK));
    std::vector<double> verdicts(BLOCK);
    try {
        mu::Parser parser;
        defineOperators(parser);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            parser.DefineVar("v" + std::to_string(i), columns[i].data());
        }
        parser.SetExpr(program.text);
        std::size_t kept = 0;
        for (std::size_t start = 0; start < particles.size(); start += BLOCK) {
            std::size_t const count = std::min(BLOCK, particles.size() - start);
            for (std::size_t column = 0; column < columns.size(); ++column) {
                Source const& source = program.sources[column];
                for (std::size_t i = 0; i < count; ++i) {
                    columns[column][i] = source(particles[start + i]);
                }
            }
            parser.Eval(verdicts.data(), static_cast<int>(count));
            for (std::size_t i = 0; i < count; ++i) {
                particles[kept] = particles[start + i];
                kept += verdicts[i] != 0 && !std::isnan(verdicts[i]) ? 1 : 0;
            }
        }
        particles.resize(kept);
    } catch (mu::ParserError const& error) {
        return _fault(reasonOf(error), 0);
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
