#pragma once

#include "foundation/geometry/Box3.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/effects/EffectParameter.h"
#include "viewport/editing/ObjectTransform.h"
#include "viewport/live/Workspace.h"
#include "viewport/window/panel/PanelRequests.h"
#include "viewport/window/panel/widgets.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// What a section of the panel shows and edits.
struct PanelContext {
    Workspace& workspace;
    Options& options;  ///< changed by the sections; the panel asks for them where they differ
    PanelRequests& requests;
};

/// What is open, how its values are spread, and how to open something else.
class DataSection {
public:
    void draw(PanelContext& context);

private:
    void _drawOpening(PanelContext& context);
    void _listFolder(std::string const& folder);

    std::string path;
    std::string pathLack;
    std::string listedFolder;                           // whose entries these are
    std::vector<std::pair<std::string, bool>> entries;  // names, and whether they are folders
    std::string channel;                                // whose values are shown
    std::vector<std::string> namedFiles;                // the files whose names were looked at
    bool areNumbered = false;                           // they may be frames of a series
};

class ParticleSection {
public:
    void draw(PanelContext& context);

private:
    void _drawChannel(PanelContext& context) const;
    void _drawColors(PanelContext& context) const;
    void _drawRange(PanelContext& context);
    void _drawChoice(PanelContext& context);

    CheckedText selection;
    std::optional<ValueRange> typedRange;
    std::optional<Box3<double>> typedClip;
    int grabbedEnd = -1;  // of the range, on the histogram: 0 low, 1 high
};

class MeshSection {
public:
    void draw(PanelContext& context);

private:
    CheckedText texture;
};

class EffectSection {
public:
    void draw(PanelContext& context);

private:
    void _drawParameters();
    void _drawShaders(Workspace const& workspace);
    void _drawParameter(EffectParameter const& parameter);

    std::optional<EffectSpec> draft;    // what is shown; may lack what it needs to be drawn
    std::optional<EffectSpec> former;   // of the options, before the draft was asked for
    std::optional<EffectSpec> refused;  // the draft that could not be made ready
    std::optional<EffectSpec> taken;    // of the options that the draft was taken from, or became
    std::map<std::string, CheckedText> texts;
};

class ViewSection {
public:
    void draw(PanelContext& context);

private:
    void _drawCamera(PanelContext& context) const;
    static void _drawSurroundings(PictureOptions& picture);
};

/// Where the selected object is moved, turned and scaled.
class ObjectSection {
public:
    void draw(PanelContext& context);

private:
    std::optional<ObjectTransform> held;  // while a number is edited, which is one step
};

/// What was found where the user clicked last.
class PickedSection {
public:
    /// \param lines as --pick prints them; empty: nothing was clicked
    void set(std::string const& lines) { text = lines; }
    void draw(PanelContext& context) const;

private:
    std::string text;
};

class PictureSection {
public:
    void draw(PanelContext& context);

    /// Asks for the picture, as Ctrl+S does.
    void save(PanelRequests& requests) const;

private:
    std::string path = "picture.png";
    bool hasOwnSize = false;
    int size[2] = {1920, 1080};
};

/// How the values of a channel are spread, in a strip as wide as the panel.
/// \param colors of the values; null: all bars have one color
/// \param range whose ends are shown and can be dragged; null: none
/// \param grabbedEnd -1, or which end is being dragged
/// \return whether the range was changed
bool drawHistogram(ChannelFacts const& facts, ValueColors const* colors, ValueRange* range, int* grabbedEnd);

/// The names of kinds with their colors and numbers.
void drawLegend(ParticleLegend const& legend);

/// How the scene is drawn, at its upper right corner.
/// \param right, top of the scene, units of the window
void drawOverlay(Workspace& workspace, float right, float top);

}  // namespace vellum::viewport
