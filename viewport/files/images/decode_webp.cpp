#include "viewport/files/images/picture_decoders.h"

#include <cstdint>

#include <webp/decode.h>

namespace vellum::viewport {

bool decodeWebp(std::string_view bytes, VL_Image& image) {
    auto const* const data = reinterpret_cast<std::uint8_t const*>(bytes.data());
    WebPDecoderConfig config;
    if (WebPInitDecoderConfig(&config) == 0 ||
        WebPGetFeatures(data, bytes.size(), &config.input) != VP8_STATUS_OK || config.input.width <= 0 ||
        config.input.height <= 0) {
        return false;
    }
    bool const hasAlpha = config.input.has_alpha != 0;
    unsigned int const channels = hasAlpha ? 4 : 3;
    if (!image.create(static_cast<unsigned int>(config.input.width),
                      static_cast<unsigned int>(config.input.height), channels, 8)) {
        return false;
    }
    std::size_t const stride = std::size_t(image.width()) * channels;
    config.options.flip = 1;  // The bottom row comes first.
    config.output.colorspace = hasAlpha ? MODE_RGBA : MODE_RGB;
    config.output.is_external_memory = 1;
    config.output.u.RGBA = {image.getBuffer(), static_cast<int>(stride), stride * image.height()};
    bool const isDecoded = WebPDecode(data, bytes.size(), &config) == VP8_STATUS_OK;
    WebPFreeDecBuffer(&config.output);
    return isDecoded;
}

}  // namespace vellum::viewport
