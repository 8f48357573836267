#pragma once

/// \file
/// The toolkit in one include: what nearly every application writes on top of the library. It opens no
/// windows and reads no files. It includes the library's whole interface and no GL header.
///
///     vellum::toolkit::RenderSession session;                         // a context is current
///     vellum::Mesh_RL_GL& renderer = session.addMeshRenderer(mesh);
///     vellum::toolkit::CameraController controls(session.camera());
///     controls.fit(mesh.box());
///
///     vellum::toolkit::View const view = controls.load({0, 0, width, height});   // every frame
///     vellum::toolkit::Lit const lit(view);
///     vellum::toolkit::drawMesh(renderer, {});

#include "toolkit/AxisDrag.h"
#include "toolkit/CameraController.h"
#include "toolkit/ColorMap.h"
#include "toolkit/EffectLights.h"
#include "toolkit/EvenChoice.h"
#include "toolkit/Framing.h"
#include "toolkit/Layer.h"
#include "toolkit/Lights.h"
#include "toolkit/Lit.h"
#include "toolkit/MeshStyle.h"
#include "toolkit/ParticleLook.h"
#include "toolkit/ParticleRenderer.h"
#include "toolkit/RenderSession.h"
#include "toolkit/Span.h"
#include "toolkit/StageReport.h"
#include "toolkit/UserEffect.h"
#include "toolkit/View.h"
#include "toolkit/ViewKind.h"
#include "toolkit/arrow_box.h"
#include "toolkit/draw_mesh.h"
#include "toolkit/draw_with.h"
#include "toolkit/mesh_arrays.h"
#include "toolkit/particle_arrays.h"
#include "toolkit/pick.h"
#include "toolkit/transforms.h"

#include "vl_raster_gl.h"
