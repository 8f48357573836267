#include "viewport/files/particles/ParticleSeries.h"
#include "viewport/text/shortest_number.h"
#include "viewport/window/panel/sections.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <imgui_stdlib.h>

namespace vellum::viewport {

namespace {

std::string boxText(Box3<double> const& box) {
    std::string text;
    double const ends[3][2] = {{box.min.x, box.max.x}, {box.min.y, box.max.y}, {box.min.z, box.max.z}};
    char const* const names[3] = {"x ", "y ", "z "};
    for (int axis = 0; axis < 3; ++axis) {
        text += (axis > 0 ? "\n" : "") + std::string(names[axis]) + shortNumber(ends[axis][0]) + " to " +
                shortNumber(ends[axis][1]);
    }
    return text;
}

void add(std::string& text, std::size_t count, char const* what) {
    if (count > 0) {
        text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + what;
    }
}

std::string holdingsOf(FileFacts const& file) {
    std::string text;
    add(text, file.triangleCount, "triangles");
    add(text, file.lineCount, "lines");
    add(text, file.pointCount, "points");
    add(text, file.vertexCount, "vertices");
    add(text, file.particleCount, "particles");
    if (!file.isMesh) {
        text += (file.frameCount > 1 ? ", " + std::to_string(file.frameCount) + " frames" : std::string()) +
                ", step " + std::to_string(file.timestep) +
                (file.time ? ", time " + shortNumber(*file.time) : std::string());
    }
    return text;
}

void drawFile(FileFacts const& file) {
    ImGui::TextWrapped("%s", file.name.c_str());
    ImGui::Indent();
    std::string const format = file.extension.empty() ? std::string() : "." + file.extension + ": ";
    paleLine(format + (file.isMesh ? "mesh, " : "") + holdingsOf(file));
    if (file.bounds) {
        paleLine(boxText(*file.bounds));
    }
    ImGui::Unindent();
}

}  // namespace

void DataSection::draw(PanelContext& context) {
    if (!sectionHeader("Data", true)) {
        return;
    }
    _drawOpening(context);
    Workspace& workspace = context.workspace;
    if (context.options.files != namedFiles) {
        namedFiles = context.options.files;
        areNumbered = isSeries(namedFiles);
    }
    if ((context.options.isSeries || areNumbered) &&
        checkBox("Frames of a series", context.options.isSeries,
                 "--series: numbered files are the frames of one dump, and not shown together")) {
        context.options.particles.frame.reset();
        context.options.time.reset();
    }
    std::vector<FileFacts> const* const files =
        workspace.content() != nullptr ? workspace.channels().files() : nullptr;
    if (files != nullptr) {
        for (FileFacts const& file : *files) {
            drawFile(file);
        }
    } else {
        for (std::string const& file : workspace.options().files) {
            ImGui::TextWrapped("%s", file.c_str());
        }
    }
    for (Fault const& note : workspace.notes()) {
        ImGui::TextWrapped("\xE2\x80\xA2 %s", note.line().c_str());
    }
    std::vector<std::string> const& names = workspace.channels().names();
    if (names.empty()) {
        return;
    }
    if (std::find(names.begin(), names.end(), channel) == names.end()) {
        channel = names.front();
    }
    if (ImGui::BeginCombo("Values of", channel.c_str())) {
        for (std::string const& name : names) {
            if (ImGui::Selectable(name.c_str(), name == channel)) {
                channel = name;
            }
        }
        ImGui::EndCombo();
    } else {
        hint("How the values of a column are spread over all files");
    }
    if (ChannelFacts const* const facts = workspace.channels().facts(channel)) {
        drawHistogram(*facts, nullptr, nullptr, nullptr);
        paleLine(shortNumber(facts->least) + " to " + shortNumber(facts->most) +
                 (facts->unit.empty() ? "" : " " + facts->unit));
        if (facts->undefinedCount > 0) {
            paleLine(std::to_string(facts->undefinedCount) + " are no finite numbers");
        }
    }
}

void DataSection::_drawOpening(PanelContext& context) {
    if (ImGui::Button("Open...")) {
        std::string const first = context.workspace.options().files.empty()
                                      ? std::string()
                                      : context.workspace.options().files.front();
        std::error_code ignored;
        std::filesystem::path const folder = std::filesystem::absolute(first, ignored).parent_path();
        path = (folder.empty() ? std::filesystem::current_path(ignored) : folder).string() + "/";
        pathLack.clear();
        listedFolder.clear();
        ImGui::OpenPopup("open");
    }
    hint("FILE: a mesh or particle file in place of what is open");
    ImGui::SameLine();
    if (ImGui::Button("Reload")) {
        context.requests.reload = true;
    }
    hint("Reads the files again and keeps the view; F5");
    ImGui::SameLine();
    if (ImGui::Button("Fit")) {
        context.requests.fit = true;
    }
    hint("See everything; F");
    if (!ImGui::BeginPopup("open")) {
        return;
    }
    float const width = ImGui::GetFontSize() * 26;
    ImGui::SetNextItemWidth(width);
    bool isOpened = ImGui::InputText("##path", &path, ImGuiInputTextFlags_EnterReturnsTrue);
    std::size_t const slash = path.rfind('/');
    std::string const folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    std::string const start = slash == std::string::npos ? path : path.substr(slash + 1);
    if (folder != listedFolder) {
        _listFolder(folder);
    }
    ImGui::BeginChild("files", {width, ImGui::GetFontSize() * 16}, true);
    if (ImGui::Selectable("..", false, ImGuiSelectableFlags_DontClosePopups)) {
        path = std::filesystem::path(folder.substr(0, folder.size() - 1)).parent_path().string();
        path += path.empty() || path.back() != '/' ? "/" : "";
    }
    for (auto const& [name, isFolder] : entries) {
        std::string const shown = name + (isFolder ? "/" : "");
        bool const isWhole = std::any_of(entries.begin(), entries.end(),
                                         [&](auto const& entry) { return entry.first == start; });
        if ((isWhole || shown.compare(0, start.size(), start) == 0) &&
            ImGui::Selectable(shown.c_str(), name == start,
                              ImGuiSelectableFlags_DontClosePopups | ImGuiSelectableFlags_AllowDoubleClick)) {
            path = (slash == std::string::npos ? std::string() : folder) + shown;
            isOpened = isOpened || (!isFolder && ImGui::IsMouseDoubleClicked(ImGuiMouseButton_Left));
        }
    }
    ImGui::EndChild();
    isOpened = ImGui::Button("Open") || isOpened;
    ImGui::SameLine();
    if (ImGui::Button("Cancel")) {
        ImGui::CloseCurrentPopup();
    }
    if (isOpened) {
        pathLack = path.empty() ? "the name of a file is missing" : lackOfFile(path).value_or("");
        if (pathLack.empty()) {
            context.requests.filesToOpen = {path};
            ImGui::CloseCurrentPopup();
        }
    }
    if (!pathLack.empty()) {
        faultLine(pathLack);
    }
    ImGui::EndPopup();
}

/// Folders first, each in alphabetical order; without hidden ones.
void DataSection::_listFolder(std::string const& folder) {
    constexpr std::size_t MOST = 5000;  // more nobody reads
    listedFolder = folder;
    entries.clear();
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error), end;
         !error && it != end && entries.size() < MOST; it.increment(error)) {
        std::string const name = it->path().filename().string();
        std::error_code ignored;
        if (name.front() != '.') {
            entries.emplace_back(name, it->is_directory(ignored));
        }
    }
    std::sort(entries.begin(), entries.end(), [](auto const& a, auto const& b) {
        return a.second != b.second ? a.second : a.first < b.first;
    });
}

}  // namespace vellum::viewport
