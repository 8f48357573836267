#pragma once

#include "toolkit/export.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::toolkit {

/// The parts of a GLSL program that can be at fault.
enum class Stage { VERTEX, FRAGMENT, GEOMETRY, PROGRAM };

/// What the driver says about a place in the text of a stage.
struct StageMessage {
    int line;          ///< of the text, from 1; 0 where the driver names none
    std::string text;  ///< the driver's words, without the place
};

/// Why a stage of a user's effect is not what the user wrote, and what is drawn in its place.
struct StageReport {
    enum class Replacement {
        NOTHING,       ///< it is used as it is; the messages are warnings
        PASS_THROUGH,  ///< a stage that passes everything on
        LEFT_OUT,      ///< the program has no such stage
        ALL_STAGES     ///< stages that pass everything on take the place of the whole program
    };

    Stage stage;
    std::string file;                    ///< empty for a stage that has no file, and for Stage::PROGRAM
    std::vector<StageMessage> messages;  ///< at least one
    std::string
        log;  ///< the driver's words, unchanged; empty where it has none, as for a file that cannot be read
    Replacement replacement;
};

/// The report as lines for people, each complete: "FILE:LINE: MESSAGE" for the messages, and last what is
/// drawn instead. A stage without a file is named "the vertex stage" and so on, the program "the program of
/// the stages". Control characters become '?', as drivers repeat texts of files.
VL_TOOLKIT_EXPORT std::string toText(StageReport const& report);

/// The lines of a driver's log, each once. Understood are the forms "0:12(5): error: ...", "0(12) : error
/// ..." and "ERROR: 0:12: ...".
VL_TOOLKIT_EXPORT std::vector<StageMessage> readStageLog(std::string const& log);

/// What is wrong with a file that is to be the text of a stage, in one clause without its name; nothing where
/// it suits. A stage is a plain file of text, not empty and at most 1 MiB large; directories, devices and
/// pipes are faults.
VL_TOOLKIT_EXPORT std::optional<std::string> stageFileFault(std::string const& path);

}  // namespace vellum::toolkit
