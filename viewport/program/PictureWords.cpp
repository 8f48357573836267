#include "viewport/program/PictureWords.h"

#include "viewport/program/add_word.h"
#include "viewport/program/option_modes.h"
#include "viewport/program/word_values.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vellum::viewport {

namespace {

char const* const OUT = "--out";

/// An option of a picture in the help.
struct Row {
    char const* group;
    char const* name;
    char const* type;  // of its word; empty: a flag
    char const* meaning;
};

constexpr char PICTURE[] = "Picture (after an --out: of that picture alone)";
constexpr char CAMERA[] = "Camera (as Picture; places in axes and units of the files)";
constexpr char AROUND[] = "Around the scene (as Picture)";

constexpr Row ROWS[] = {
    {PICTURE, "--out", "FILE",
     "Write a picture to this file, in the format of its name: .png, .jpg, .jpeg, .exr (with\n"
     "depths); '-' writes a PNG to standard output; may be repeated"},
    {PICTURE, "--size", "WxH", "Size of the picture in pixels, each side 1 to 16384 (1280x720)"},
    {PICTURE, "--quality", "N", "Of a JPEG: 1 to 100, the larger the better (90)"},
    {PICTURE, "--pick", "X,Y",
     "Print what is at this pixel, counted from the upper left corner: a line with its\n"
     "picking name and what it belongs to, or 'nothing'; then a line '  KEY: VALUE' for each\n"
     "fact: of a particle its index in the file from 0, id, position and all values; of a\n"
     "mesh the triangle, line or point, the position on it, its nearest vertex and the\n"
     "values there; with --info=json only in the document, as 'pick' of the picture"},
    {CAMERA, "--view", "VIEW", "perspective, front, back, top, bottom, left or right (perspective)"},
    {CAMERA, "--projection", "MODE", "perspective or parallel (perspective)"},
    {CAMERA, "--camera-position", "X,Y,Z", "Where the eye is (far enough away to see everything)"},
    {CAMERA, "--camera-focus", "X,Y,Z", "What is in the middle of the picture (the scene)"},
    {CAMERA, "--camera-up", "X,Y,Z", "The direction that is upright in the picture (that of --up)"},
    {CAMERA, "--azimuth", "DEGREES", "From where the scene is seen: 0 front, 90 right, 180 back (38)"},
    {CAMERA, "--elevation", "DEGREES", "How far from above, -90 to 90 (24)"},
    {CAMERA, "--fov", "DEGREES", "The vertical angle of view, 1 to 170 (32)"},
    {CAMERA, "--camera-height", "LENGTH",
     "The height that a parallel projection shows, in units of the files"},
    {CAMERA, "--zoom", "FACTOR", "Enlarge the picture about its middle (1)"},
    {AROUND, "--background", "COLOR",
     "RRGGBB, or TOP,BOTTOM, each RRGGBB, or transparent; JPEG has no transparency\n"
     "(3c4655,16191f)"},
    {AROUND, "--light", "AZ,EL",
     "The main light comes from there: azimuth and elevation in degrees, as of the camera\n"
     "(from beside the eye)"},
    {AROUND, "--gizmo", "MODE", "Draw handles over the model: move, rotate or scale"},
    {AROUND, "--no-grid", "", "Leave out the ground grid"},
    {AROUND, "--no-axes", "", "Leave out the axes in the corner"},
    {AROUND, "--no-bar", "", "Leave out the bar of the particles' colors"},
    {AROUND, "--no-box", "", "Leave out the boxes of particles"},
    {AROUND, "--sizes", "", "Draw the box around everything, with its sizes in units of the files"},
};

}  // namespace

// == PictureWords ==

std::optional<Fault> PictureWords::set(std::string const& option, std::string const& word) {
    return words.emplace(option, word).second
               ? std::nullopt
               : std::optional<Fault>(usageFault(option + ": is given twice for one picture"));
}

std::string PictureWords::_word(std::string const& option) const {
    auto const found = words.find(option);
    return found != words.end() ? found->second : std::string();
}

std::optional<Fault> PictureWords::read(PictureOptions& picture) const {
    picture.out = _word(OUT);
    if (has(OUT) && picture.out.empty()) {
        return usageFault("--out: a picture needs the name of its file");
    }
    picture.explanations = {!has("--no-grid"), !has("--no-axes"), !has("--no-bar"), !has("--no-box"),
                            has("--sizes")};
    std::optional<Fault> const faults[] = {readMode("--gizmo", _word("--gizmo"), GIZMOS, picture.gizmo),
                                           _readSize(picture),
                                           _readPick(picture),
                                           _readQuality(picture),
                                           _readCamera(picture.camera),
                                           _cameraConflict(),
                                           _readBackground(picture.background),
                                           _readLight(picture.light)};
    auto const* const first = std::find_if(std::begin(faults), std::end(faults),
                                           [](auto const& fault) { return fault.has_value(); });
    return first != std::end(faults) ? *first : std::nullopt;
}

std::optional<Fault> PictureWords::_readSize(PictureOptions& picture) const {
    if (!has("--size")) {
        return std::nullopt;
    }
    std::string const size = _word("--size");
    auto const isSide = [](int length) { return length >= 1 && length <= PictureSize::LARGEST; };
    std::optional<std::pair<int, int>> const sides = toPair(size, 'x');
    if (!sides || !isSide(sides->first) || !isSide(sides->second)) {
        return wordFault("--size", size,
                         "WIDTHxHEIGHT with both from 1 to " + std::to_string(PictureSize::LARGEST));
    }
    picture.size = {sides->first, sides->second};
    return std::nullopt;
}

std::optional<Fault> PictureWords::_readPick(PictureOptions& picture) const {
    if (!has("--pick")) {
        return std::nullopt;
    }
    std::string const pick = _word("--pick");
    std::optional<std::pair<int, int>> const pixel = toPair(pick, ',');
    if (!pixel) {
        return wordFault("--pick", pick, "X,Y, two numbers of pixels");
    }
    if (pixel->first >= picture.size.width || pixel->second >= picture.size.height) {
        return usageFault("--pick: '" + pick + "' is outside the picture of " +
                          std::to_string(picture.size.width) + "x" + std::to_string(picture.size.height) +
                          " pixels");
    }
    picture.pick = Pixel{pixel->first, pixel->second};
    return std::nullopt;
}

std::optional<Fault> PictureWords::_readQuality(PictureOptions& picture) const {
    if (!has("--quality")) {
        return std::nullopt;
    }
    std::string const quality = _word("--quality");
    std::optional<int> const number = toInteger(quality);
    if (!number || *number < 1 || *number > 100) {
        return wordFault("--quality", quality, "a whole number from 1 to 100");
    }
    picture.quality = *number;
    return std::nullopt;
}

// == The camera ==

std::optional<Fault> PictureWords::_readCamera(CameraSpec& camera) const {
    constexpr double FULL_CIRCLE = 360;
    constexpr double SMALLEST_ZOOM = 1e-6;
    std::optional<double> zoom;
    std::optional<Fault> const faults[] = {
        readMode("--view", _word("--view"), VIEWS, camera.view),
        readMode("--projection", _word("--projection"), PROJECTIONS, camera.projection),
        _readVector("--camera-position", camera.position),
        _readVector("--camera-focus", camera.focus),
        _readVector("--camera-up", camera.up),
        _readNumber("--azimuth", -FULL_CIRCLE, FULL_CIRCLE, "a number of degrees from -360 to 360",
                    camera.azimuth),
        _readNumber("--elevation", -90, 90, "a number of degrees from -90 to 90", camera.elevation),
        _readNumber("--fov", 1, 170, "a number of degrees from 1 to 170", camera.fieldOfView),
        _readNumber("--camera-height", std::numeric_limits<double>::min(), std::numeric_limits<double>::max(),
                    "a number above 0", camera.height),
        _readNumber("--zoom", SMALLEST_ZOOM, 1 / SMALLEST_ZOOM, "a factor from 0.000001 to 1000000", zoom)};
    for (std::optional<Fault> const& fault : faults) {
        if (fault) {
            return fault;
        }
    }
    camera.zoom = zoom.value_or(1);
    if (camera.up && !(length(*camera.up) > 0)) {
        return wordFault("--camera-up", _word("--camera-up"), "a direction");
    }
    if (camera.position && camera.focus && length(*camera.focus - *camera.position) == 0) {
        return usageFault("--camera-position and --camera-focus: are the same point");
    }
    return std::nullopt;
}

std::optional<Fault> PictureWords::_cameraConflict() const {
    std::string const view = _word("--view");
    if (has("--view") && view != "perspective") {
        for (char const* const other : {"--projection", "--camera-position", "--camera-up", "--azimuth",
                                        "--elevation", "--fov", "--camera-height"}) {
            if (has(other)) {
                return usageFault(std::string(other) + ": cannot be used with --view " + view);
            }
        }
    }
    bool const isParallel = _word("--projection") == "parallel";
    if (view == "perspective" && isParallel) {
        return usageFault("--projection: parallel cannot be used with --view perspective");
    }
    if (isParallel && has("--fov")) {
        return usageFault("--fov: a parallel projection has none; see --zoom");
    }
    if (!isParallel && has("--camera-height")) {
        return usageFault("--camera-height: only a parallel projection has one; see --zoom");
    }
    for (char const* const angle : {"--azimuth", "--elevation"}) {
        if (has(angle) && has("--camera-position")) {
            return usageFault(std::string(angle) +
                              ": cannot be used with --camera-position, which says it already");
        }
    }
    return std::nullopt;
}

std::optional<Fault> PictureWords::_readVector(char const* option,
                                               std::optional<Vector3<double>>& vector) const {
    if (!has(option)) {
        return std::nullopt;
    }
    vector = toVector(_word(option));
    return vector ? std::nullopt
                  : std::optional<Fault>(wordFault(option, _word(option), "X,Y,Z, three numbers"));
}

std::optional<Fault> PictureWords::_readNumber(char const* option, double low, double high,
                                               char const* meaning, std::optional<double>& number) const {
    if (!has(option)) {
        return std::nullopt;
    }
    number = toReal(_word(option));
    return number && *number >= low && *number <= high
               ? std::nullopt
               : std::optional<Fault>(wordFault(option, _word(option), meaning));
}

// == Looks ==

std::optional<Fault> PictureWords::_readBackground(Background& background) const {
    if (!has("--background")) {
        return std::nullopt;
    }
    std::string const text = _word("--background");
    if (text == "transparent") {
        background.isTransparent = true;
        return std::nullopt;
    }
    std::vector<std::string_view> const colors = split(text, ',');
    std::optional<Color4<float>> const top = toColor(colors.front());
    std::optional<Color4<float>> const bottom = toColor(colors.back());
    if (colors.size() > 2 || !top || !bottom) {
        return wordFault("--background", text, "RRGGBB, TOP,BOTTOM as RRGGBB,RRGGBB, or transparent");
    }
    background = {*top, *bottom, false};
    return std::nullopt;
}

std::optional<Fault> PictureWords::_readLight(std::optional<LightSpec>& light) const {
    if (!has("--light")) {
        return std::nullopt;
    }
    std::optional<std::vector<double>> const angles = toReals(_word("--light"), 2);
    if (!angles || std::abs((*angles)[0]) > 360 || std::abs((*angles)[1]) > 90) {
        return wordFault("--light", _word("--light"),
                         "AZIMUTH,ELEVATION, degrees from -360 to 360 and from -90 to 90");
    }
    light = LightSpec{(*angles)[0], (*angles)[1]};
    return std::nullopt;
}

// == PictureList ==

void PictureList::addTo(CLI::App& app) {
    for (Row const& row : ROWS) {
        Place& place = places[row.name];
        if (*row.type == '\0') {
            place.option = app.add_flag(row.name, row.meaning);
        } else {
            place.option =
                addWord(app, row.name, place.given, row.meaning, row.type)->allow_extra_args(false);
        }
        place.option->group(row.group);
    }
}

bool PictureList::isFlag(std::string const& option) const {
    auto const* const row =
        std::find_if(std::begin(ROWS), std::end(ROWS), [&](Row const& r) { return r.name == option; });
    return row != std::end(ROWS) && *row->type == '\0';
}

std::optional<Fault> PictureList::read(CLI::App const& app, PictureWords const& standard,
                                       std::vector<PictureOptions>& pictures) const {
    PictureWords ofAll;
    std::vector<PictureWords> own;
    std::map<CLI::Option const*, std::size_t> taken;  // words of an option
    for (CLI::Option const* const option : app.parse_order()) {
        auto const place = std::find_if(places.begin(), places.end(),
                                        [&](auto const& entry) { return entry.second.option == option; });
        if (place == places.end()) {
            continue;
        }
        if (place->first == OUT) {
            own.emplace_back();
        }
        std::string const word = isFlag(place->first) ? "true" : place->second.given[taken[option]++];
        PictureWords& words = own.empty() ? ofAll : own.back();
        if (std::optional<Fault> fault = words.set(place->first, word)) {
            return fault;
        }
    }
    if (own.empty()) {
        own.emplace_back();
    }
    ofAll.complete(standard);
    pictures.clear();
    for (PictureWords& words : own) {
        words.complete(ofAll);
        if (std::optional<Fault> fault = words.read(pictures.emplace_back())) {
            return fault;
        }
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
