#pragma once

#include "Model.h"

#include <algorithm>

namespace gl_spy {

struct Script::Rules {
    struct Status {
        bool succeeds = true;
        std::string log;
        std::function<bool(std::string const&)> chosen;  // by the shader's source; empty for every shader
    };

    std::map<unsigned int, std::optional<std::string>> strings;  // by name; no string stands for null
    std::map<unsigned int, std::vector<int>> integers;           // by name
    std::deque<unsigned int> errors;
    std::vector<Status> shaders;  // the last that applies counts
    std::optional<Status> programs;
    std::optional<int> emptyLogLength;
    std::map<std::string, int> uniformLocations;
    std::map<std::string, int> attributeLocations;
    bool nullMap = false;
    bool noBufferNames = false;
    std::unique_ptr<Model> model;  // set when nothing is passed on to a driver
};

/// Where the entry points meet the recordings and scripts that are alive.
class Spy {
public:
    /// True while a recording or script is alive. The one thing that an unwatched call looks at.
    static inline bool watching = false;

    /// While one of these lives, calls go straight to the driver: those of GLU, of GLEW and of the spy
    /// itself.
    class Passage {
    public:
        Passage() { ++_depth; }
        ~Passage() { --_depth; }
        Passage(Passage const&) = delete;
        Passage& operator=(Passage const&) = delete;
    };

    static bool isPassing() { return _depth > 0; }

    static void add(Recording& recording) { _change(_recordings, &recording, true); }
    static void remove(Recording& recording) { _change(_recordings, &recording, false); }
    static void add(Script::Rules& rules) { _change(_rules, &rules, true); }
    static void remove(Script::Rules& rules) { _change(_rules, &rules, false); }

    static void note(Call const& call) {
        for (Recording* const recording : _recordings) {
            recording->_calls.push_back(call);
        }
        if (Model* const model = Spy::model()) {
            model->follow(call);
        }
    }

    /// The first answer (a pointer or optional that is set) among the scripts, the latest script first.
    template <class Question>
    static auto ask(Question const& question) {
        decltype(question(*_rules.front())) answer{};
        for (auto rules = _rules.rbegin(); rules != _rules.rend() && !answer; ++rules) {
            answer = question(**rules);
        }
        return answer;
    }

    /// Answers instead of a driver; null when there is one.
    static Model* model() {
        return ask([](Script::Rules& rules) { return rules.model.get(); });
    }

private:
    template <class Watcher>
    static void _change(std::vector<Watcher*>& watchers, Watcher* watcher, bool adds) {
        if (adds) {
            watchers.push_back(watcher);
        } else {
            watchers.erase(std::find(watchers.begin(), watchers.end(), watcher));
        }
        watching = !_recordings.empty() || !_rules.empty();
    }

    static inline std::vector<Recording*> _recordings;
    static inline std::vector<Script::Rules*> _rules;
    static inline int _depth = 0;
};

}  // namespace gl_spy
