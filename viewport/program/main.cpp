#include "offscreen/OffscreenContext.h"
#include "viewport/content/Content.h"
#include "viewport/content/input_files.h"
#include "viewport/drawing/ViewLayout.h"
#include "viewport/drawing/layer/GlewStart.h"
#include "viewport/files/images/PictureFormat.h"
#include "viewport/program/CommandLine.h"
#include "viewport/program/Configuration.h"
#include "viewport/program/Console.h"
#include "viewport/program/ConsoleObserver.h"
#include "viewport/program/ContextAhead.h"
#include "viewport/program/Description.h"
#include "viewport/program/Film.h"
#include "viewport/program/PictureMaker.h"
#include "viewport/program/describe_pick.h"
#include "viewport/program/idle_options.h"
#include "viewport/program/open_window.h"
#include "viewport/program/standard_streams.h"
#include "viewport/program/transform_words.h"
#include "viewport/text/single_line.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

/// The program vl_viewport: opens mesh and particle files, draws them into pictures, prints what they hold
/// and what is at a pixel.

namespace vellum::viewport {

namespace {

// == Pictures are not written over anything that is read ==

std::optional<Failure> inputReplaced(Options const& options, std::vector<std::string> const& inputs) {
    for (PictureOptions const& picture : options.pictures) {
        // The names of a film are looked at once their number is known.
        if (!picture.names && isOneOf(picture.out, inputs)) {
            return Failure{USAGE_FAULT,
                           {"", singleLine("--out: " + picture.out + " is one of the files that are read")}};
        }
    }
    return std::nullopt;
}

bool mayReplace(Options const& options) {
    return std::any_of(options.pictures.begin(), options.pictures.end(), [](PictureOptions const& picture) {
        return !picture.names && isOneOf(picture.out, {picture.out});
    });
}

/// The failure of the window's picture, before the window is opened.
std::optional<Failure> windowPictureFailure(Options const& options) {
    std::string const& file = options.windowPicture;
    std::string lack;
    if (!file.empty() && pictureFormatOf(file) != PictureFormat::PNG) {
        lack = "the name '" + file + "' is not that of a PNG";
    } else if (isOneOf(file, inputFiles(options)) ||
               (isOneOf(file, {file}) && isOneOf(file, materialFiles(options.files)))) {
        lack = file + " is one of the files that are read";
    }
    return lack.empty()
               ? std::nullopt
               : std::optional<Failure>({USAGE_FAULT, {"", singleLine("--window-picture: " + lack)}});
}

/// The failure of a picture's file that is none, before anything is read.
std::optional<Failure> outputFailure(Options const& options) {
    std::optional<Failure> replaced = inputReplaced(options, inputFiles(options));
    if (!replaced && mayReplace(options)) {
        replaced = inputReplaced(options, materialFiles(options.files));
    }
    if (replaced) {
        return replaced;
    }
    for (PictureOptions const& picture : options.pictures) {
        std::optional<PictureFormat> const format = pictureFormatOf(picture.out);
        std::error_code ignored;
        if (!picture.out.empty() && !format && std::filesystem::is_directory(picture.out, ignored)) {
            return Failure{FILE_FAULT, {picture.out, "cannot be written: is a folder"}};
        }
        if (!picture.out.empty() && !format) {
            return Failure{
                USAGE_FAULT,
                {"", singleLine("--out: the name '" + picture.out +
                                "' tells no format of pictures (known: " + PICTURE_EXTENSIONS + ")")}};
        }
        if (format == PictureFormat::JPEG && picture.background.isTransparent) {
            return Failure{USAGE_FAULT, {"", "--background: a JPEG cannot be transparent"}};
        }
    }
    return std::nullopt;
}

// == What is printed ==

/// Describes what is known without OpenGL: files and cameras.
void describePictures(Options const& options, Subject const& subject, ConsoleObserver& observer) {
    Result<std::vector<FilmCamera>> cameras = std::vector<FilmCamera>();
    if (options.film.isAsked()) {
        cameras = Film::cameras(options, subject);
    }
    for (std::size_t i = 0; i < options.pictures.size(); ++i) {
        PictureOptions const& picture = options.pictures[i];
        std::string camera;
        if (!options.hasOwnSea()) {
            ViewStyle style = Presentation::styleOf(options, picture, subject);
            if (options.film.isAsked() && cameras.isOk()) {
                cameras.value()[i].place(0, style);
            }
            ViewLayout const layout = ViewLayout::of(subject.scene, style, nullptr, picture.size, nullptr,
                                                     transformsOf(options.transforms, subject.scene));
            camera = layout.fault ? std::string() : layout.camera.options();
        }
        if (options.info == InfoForm::JSON) {
            observer.document.addPicture(picture.out, picture.size.width, picture.size.height, camera);
        } else {
            observer.texts += describePicture(picture.out, camera);
        }
    }
}

/// \param lack why there is no driver
void printInfo(Options const& options, ConsoleObserver& observer, toolkit::Layer* layer,
               std::string const& lack) {
    if (options.info == InfoForm::JSON) {
        if (layer != nullptr) {
            observer.document.setDriver(DriverFacts::of(*layer));
        }
        std::cout << observer.document.toText();
    } else if (options.info == InfoForm::TEXT) {
        std::cout << observer.texts
                  << (layer != nullptr ? describeDriver(DriverFacts::of(*layer)) : describeNoDriver(lack));
    }
}

bool needsOpenGL(Options const& options) {
    return std::any_of(options.pictures.begin(), options.pictures.end(),
                       [](PictureOptions const& picture) { return !picture.out.empty() || picture.pick; });
}

/// Ends without OpenGL.
std::optional<Failure> endWithout(Options const& options, ConsoleObserver& observer, Failure const& lack) {
    printInfo(options, observer, nullptr, lack.fault.message);
    std::optional<Failure> unwritten = flushOutput();
    return unwritten || !needsOpenGL(options) ? unwritten : lack;
}

std::optional<Failure> run(Options const& options) {
    if (options.opensWindow()) {
        std::optional<Failure> failure = windowPictureFailure(options);
        return failure ? failure : openWindow(options);
    }
    if (std::optional<Failure> failure = outputFailure(options)) {
        return failure;
    }
    ContextAhead ahead(PictureMaker::contextSettings(options));
    ConsoleObserver observer(options, [&ahead] { ahead.begin(); });
    Result<Content> loaded = Content::load(options, observer);
    if (!loaded.isOk()) {
        return Failure{FILE_FAULT, loaded.fault()};
    }
    Content& content = loaded.value();
    if (std::optional<Failure> failure = inputReplaced(options, content.textures)) {
        return failure;
    }
    if (options.film.isAsked()) {
        Result<std::size_t> const length = Film::length(options, content);
        if (!length.isOk()) {
            return Failure{USAGE_FAULT, length.fault()};
        }
        if (std::optional<Failure> failure = Film::nameFailure(options, content, length.value())) {
            return failure;
        }
    }
    Result<Subject> prepared = Subject::prepare(options, content, observer);
    if (!prepared.isOk()) {
        return Failure{FILE_FAULT, prepared.fault()};
    }
    Subject& subject = prepared.value();
    if (subject.effect && subject.effect->misfit) {
        return Failure{USAGE_FAULT, *subject.effect->misfit};
    }
    if (std::optional<Fault> const fault = transformFault(options.transforms, subject.scene)) {
        return Failure{USAGE_FAULT, *fault};
    }
    ShownKinds shown;
    shown.hasMeshes = !subject.scene.models().empty();
    shown.hasParticles = !subject.scene.clouds().empty();
    shown.hasMeshValues = subject.look.meshScale.has_value();
    shown.hasAnimations = content.hasAnimations;
    shown.hasTimes = content.hasTimes;
    shown.hasMoving = !content.moving.empty();
    shown.coloring = subject.look.coloring;
    shown.areMeshValuesHidden = subject.look.areMeshValuesHidden;
    for (Fault const& idle : idleOptions(options, shown)) {
        note(options, idle);
    }
    if (options.info != InfoForm::NONE) {
        describePictures(options, subject, observer);
    }
    if (!options.film.frames) {
        content.meshes = {};
    }

    OffscreenContext& context = ahead.get();
    if (!context.isValid()) {
        return endWithout(options, observer, {NO_OPENGL, {"", context.error()}});
    }
    if (std::optional<Fault> const fault = startGlew()) {
        return endWithout(options, observer, {NO_OPENGL, *fault});
    }
    PictureMaker maker(options, subject, context);
    if (std::optional<Failure> failure = maker.begin()) {
        return failure;
    }
    // What is picked belongs into the document.
    bool const isLast = options.info == InfoForm::JSON && options.isPicking();
    if (!isLast) {
        printInfo(options, observer, &maker.layer(), "");
    }
    if (options.film.isAsked()) {
        return Film(options, content, subject, maker).make();
    }
    std::optional<Failure> failure;
    for (std::size_t i = 0; i < options.pictures.size() && !failure; ++i) {
        failure = maker.make(options.pictures[i], [&](std::optional<Picked> const& picked) {
            if (isLast) {
                observer.document.setPick(i, picked);
            } else {
                std::cout << describePick(picked);
            }
        });
    }
    if (isLast) {
        printInfo(options, observer, &maker.layer(), "");
        std::optional<Failure> unwritten = flushOutput();
        return failure ? failure : unwritten;
    }
    return failure;
}

}  // namespace

}  // namespace vellum::viewport

int main(int argumentCount, char** arguments) {
    using namespace vellum::viewport;
    openStandardStreams();
    try {
        CommandLine const line = parseCommandLine(argumentCount, arguments, userConfiguration());
        if (line.options) {
            std::optional<Failure> const failure = run(*line.options);
            return failure ? fail(*failure) : DONE;
        }
        std::cout << line.output;
        if (std::optional<Failure> const failure = flushOutput()) {
            return fail(*failure);
        }
        if (!line.error.empty()) {
            std::cerr << line.error << std::endl;
        }
        return line.exitStatus;
    } catch (std::bad_alloc const&) {
        return fail(FILE_FAULT, "there is not enough memory");
    }
}
