#pragma once

#include "Camera_RL_GL.h"
#include "foundation/raster/Core_RL.h"
#include "offscreen/OffscreenContext.h"
#include "viewport/drawing/ColorBar.h"
#include "viewport/drawing/EffectRenderer.h"
#include "viewport/drawing/ModelRenderer.h"
#include "viewport/drawing/ParticleRenderer.h"
#include "viewport/files/images/Picture.h"
#include "viewport/program/Options.h"
#include "viewport/scene/GroundGrid.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/Scene.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A part of the picture, pixels; x from the left, y from below. May reach over the picture's edges.
struct Region {
    double x;
    double y;
    double width;
    double height;
};

/// How a picture is cut into tiles that are drawn one after the other into a buffer of moderate size, each pixel
/// with several samples, for smooth edges. Plain arithmetic.
struct Tiling {
    int samplesPerSide;  ///< a pixel is the mean of this number squared
    int width;           ///< of a tile, pixels, without the margin
    int height;
    int margin;  ///< drawn around each tile and thrown away: lines that end outside still show their width inside

    static Tiling of(int pictureWidth, int pictureHeight);

    /// For what is drawn differently in each tile, as it reads the frame or uses its coordinates: the whole picture
    /// is one tile, if it has at most 4096 pixels on each side.
    static Tiling ofOneTile(int pictureWidth, int pictureHeight);

    static Tiling of(Options const& options);  ///< The one that suits what is drawn.

    int bufferWidth() const { return (width + 2 * margin) * samplesPerSide; }
    int bufferHeight() const { return (height + 2 * margin) * samplesPerSide; }
};

/// Draws a scene through the render layer: background, ground, models, particles with the bar of their colors, the
/// gizmo over them, and the axes in the corner; or tells what of it is at a pixel.
///
///     OffscreenContext context(Viewer::contextSettings(options));     // and GLEW initialized
///     std::unique_ptr<Core_RL> layer(new Core_RL_GL);
///     Viewer viewer(*layer, scene, options);
///     Result<Picture> const picture = viewer.draw(context, Tiling::of(options.width, options.height));
///
/// It expects the state of a fresh context and leaves it changed. Scene and layer must outlive it,
/// and the context must be current until its end.
class Viewer {
public:
    /// \param look of the particles, whose sets are those of the scene; no longer needed afterwards.
    /// \param effect what draws the models that have an effect, or null if there is none; must outlive the viewer.
    Viewer(Core_RL& layer, Scene const& scene, Options const& options, ParticleLook const& look = {},
           EffectRenderer* effect = nullptr);

    /// The buffer that draw() needs.
    static OffscreenContext::Settings contextSettings(Options const& options);

    /// The whole picture, in tiles that fit the context's buffer exactly. A fault when OpenGL reports an error.
    Result<Picture> draw(OffscreenContext& context, Tiling const& tiling);

    /// What is at the pixel, or within two pixels of it: its picking name and what it belongs to ("1 gizmo move X",
    /// "16 spider.obj"), or "nothing". Particles are known by their file, like models.
    /// Handles of the gizmo come before everything else, then what is nearer to the viewer.
    std::string pick(Pixel pixel);

private:
    // == Particles ==
    void _prepareClouds();
    double _sizeForEffect(ParticleCloud const& cloud, double ball) const;

    // == Cameras and lights ==
    void _placeCamera();
    std::vector<Vector3<double>> _framedPoints() const;
    void _loadCamera(Region const& region);
    void _cropProjection(Region const& region, double width) const;
    void _placeLights() const;
    double _unitsPerPixel() const;
    Vector3<double> _viewDirection() const;
    ScreenAxes _screen() const;

    // == Parts of the picture ==
    void _drawRegion(Region const& region, int samplesPerSide);
    void _drawOwnScene();
    void _drawBackground(Region const& region) const;
    GroundGrid _ground() const;
    void _drawGround() const;
    void _drawModels();
    void _drawClouds();
    void _drawCloud(std::size_t index);
    void _drawBoxOf(ParticleCloud const& cloud) const;
    void _drawColorBar(Region const& region);
    void _drawGizmo(bool isSelecting) const;
    void _drawCornerAxes(Region const& region);
    void _drawLetter(unsigned int axis) const;

    void _pushLineWidth(double pixels) const;

    Core_RL& layer;
    Scene const& scene;
    Options const& request;
    EffectRenderer* effect;  // may be null
    ParticleMode particleMode;
    std::optional<ParticleScale> particleScale;
    std::optional<ColorBar> colorBar;  // if there is something to be told and room for it
    double frameWidth;                 // pixels of the picture, from the left, that the camera fills
    Camera_RL_GL viewCamera;
    TextureStore textures;
    std::vector<ModelRenderer> models;
    std::vector<ParticleRenderer> clouds;
    std::optional<ParticleRenderer> colorBarCells;
    std::vector<ShadedSegment> groundSegments;
    double lineScale = 1;  // samples per pixel along a side, more where the picture is large
    int OVERSAMPLING = 1;  // of a pixel
};

}  // namespace vellum::viewport
