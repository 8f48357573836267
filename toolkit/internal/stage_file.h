#pragma once

#include <string>

namespace vellum::toolkit {

/// What a file of a stage holds.
struct StageFile {
    std::string text;   ///< empty with a fault
    std::string fault;  ///< as of stageFileFault(); empty where there is none
};

StageFile readStageFile(std::string const& path);

}  // namespace vellum::toolkit
