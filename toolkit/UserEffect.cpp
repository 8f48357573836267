#include "toolkit/UserEffect.h"

#include "Program_gl.h"
#include "Shader_gl.h"
#include "toolkit/internal/gl.h"
#include "toolkit/internal/stage_file.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vellum::toolkit {

namespace {

using Replacement = StageReport::Replacement;

/// Some drivers write "No errors." and the like for stages that compile.
std::vector<StageMessage> warningsOf(std::string const& log) {
    std::vector<StageMessage> messages = readStageLog(log);
    auto const isOther = [](StageMessage const& message) {
        return message.text.find("warning") == std::string::npos &&
               message.text.find("WARNING") == std::string::npos;
    };
    messages.erase(std::remove_if(messages.begin(), messages.end(), isOther), messages.end());
    return messages;
}

/// The messages of a log, or what stands for one that is empty.
std::vector<StageMessage> messagesOf(std::string const& log, char const* otherwise) {
    std::vector<StageMessage> messages = readStageLog(log);
    if (messages.empty()) {
        messages.push_back({0, otherwise});
    }
    return messages;
}

}  // namespace

/// A stage while it is loaded; the last one is the program.
struct UserEffect::Part {
    Stage stage;
    std::string file;
    std::string text;  // empty where there is no file, or where it is not used
    std::optional<StageReport> report;

    bool isUsed() const { return !text.empty(); }

    void tell(std::vector<StageMessage> const& messages, std::string const& log, Replacement replacement) {
        report = StageReport{stage, file, messages, log, replacement};
        if (replacement != Replacement::NOTHING) {
            text.clear();
        }
    }
};

UserEffect::UserEffect(Layer& layer) : layer(layer) {}

bool UserEffect::isLinked() const {
    GLint linked = GL_FALSE;
    if (program->getId() != 0) {
        glGetProgramiv(program->getId(), GL_LINK_STATUS, &linked);
    }
    return linked != GL_FALSE;
}

std::vector<StageReport> UserEffect::load(StageFiles const& files) {
    loadedFiles = files;
    std::vector<Part> parts = _readParts();
    if (layer.checkShaderSupport()) {
        std::vector<CompileLog> ofOthers = layer.takeCompileLogs();
        _compile(parts);
        _judgeProgram(parts);
        layer.returnCompileLogs(std::move(ofOthers));
        enable(false);
        // GL raises errors when a program that is not linked is taken into use.
        layer.getError("UserEffect", __LINE__);
    } else {
        std::for_each(parts.begin(), parts.end(), [](Part& part) { part.report.reset(); });
        parts.back().tell({{0, "OpenGL here has no shaders"}}, "", Replacement::LEFT_OUT);
    }
    std::vector<StageReport> reports;
    for (Part& part : parts) {
        if (part.report) {
            reports.push_back(std::move(*part.report));
        }
    }
    return reports;
}

/// The vertex, fragment and geometry stage and the program, with the files that can be used.
std::vector<UserEffect::Part> UserEffect::_readParts() const {
    std::vector<Part> parts{{Stage::VERTEX, loadedFiles.vertex, "", std::nullopt},
                            {Stage::FRAGMENT, loadedFiles.fragment, "", std::nullopt},
                            {Stage::GEOMETRY, loadedFiles.geometry, "", std::nullopt},
                            {Stage::PROGRAM, "", "", std::nullopt}};
    for (Part& part : parts) {
        if (part.file.empty()) {
            continue;
        }
        bool const isGeometry = part.stage == Stage::GEOMETRY;
        StageFile read = readStageFile(part.file);
        part.text = std::move(read.text);
        if (!read.fault.empty()) {
            part.tell({{0, read.fault}}, "", isGeometry ? Replacement::LEFT_OUT : Replacement::PASS_THROUGH);
        } else if (isGeometry && !toolkit::hasGeometryStages(layer)) {
            part.tell({{0, "OpenGL here has no geometry stages"}}, "", Replacement::LEFT_OUT);
        }
    }
    return parts;
}

void UserEffect::_compile(std::vector<Part>& parts) {
    static constexpr unsigned int TYPES[] = {GL_VERTEX_SHADER, GL_FRAGMENT_SHADER, GL_GEOMETRY_SHADER};
    reload();
    VL_String paths[3];
    for (std::size_t i = 0; i < 3; ++i) {
        // A file that cannot be read is not named to the effect, which would print a line of its own.
        paths[i] = parts[i].isUsed() ? parts[i].file.c_str() : "";
    }
    setShaders(paths[0], paths[1], paths[2]);
    for (CompileLog const& failed : layer.takeCompileLogs()) {
        for (std::size_t i = 0; i < 3; ++i) {
            Part& part = parts[i];
            if (failed.stage != TYPES[i] || part.file.empty()) {
                continue;
            }
            if (part.isUsed()) {
                part.tell(messagesOf(failed.log, "does not compile"), failed.log, Replacement::PASS_THROUGH);
            } else if (part.report) {
                // The second fault of a stage is that of the one in its place.
                part.report->replacement = Replacement::LEFT_OUT;
            }
        }
    }
    Shader_gl* const stages[] = {stage1, stage2, stage3};
    for (std::size_t i = 0; i < 3; ++i) {
        std::string const log =
            parts[i].isUsed() && stages[i] != nullptr ? stages[i]->getInfoLog() : std::string();
        std::vector<StageMessage> const warnings = warningsOf(log);
        if (!warnings.empty()) {
            parts[i].tell(warnings, log, Replacement::NOTHING);
        }
    }
}

/// Replaces all stages where they make no program, or one that draws in an arbitrary color.
void UserEffect::_judgeProgram(std::vector<Part>& parts) {
    Part& vertex = parts[0];
    Part const& fragment = parts[1];
    Part& geometry = parts[2];
    Part& lastBefore = geometry.isUsed() ? geometry : vertex;
    if (!isLinked()) {
        std::string const log = program->getInfoLog();
        parts[3].tell(messagesOf(log, "cannot be linked"), log, Replacement::ALL_STAGES);
    } else if (!fragment.isUsed() && lastBefore.isUsed() &&
               lastBefore.text.find("gl_FrontColor") == std::string::npos) {
        // Such a program links, and draws in whatever color the driver leaves in the varying.
        lastBefore.tell(
            {{0, "sets no gl_FrontColor, which the fragment stage that passes everything on shows"}}, "",
            Replacement::ALL_STAGES);
    } else {
        return;
    }
    setShaders("", "", "");
    layer.takeCompileLogs();
}

}  // namespace vellum::toolkit
