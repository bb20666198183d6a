#include "host/media/deep_picture.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <memory>

#include "host/media/MediaError.h"
#include "host/media/file_names.h"

namespace media {

namespace {

bool isTiff(const std::string& fileName) {
    const std::string suffix = suffixOf(fileName);
    return suffix == ".tif" || suffix == ".tiff";
}

}  // namespace

bool isDeepWritable(const std::string& fileName) {
    return suffixOf(fileName) == ".png" || isTiff(fileName);
}

std::vector<unsigned char> encodeDeepPicture(const std::string& path, const DeepPicture& picture) {
    const std::string fileName = fileNameOf(path);
    if (!isDeepWritable(fileName))
        throw MediaError(
            MediaErrorKind::CannotCreate,
            shown(path) + ": this format does not hold 16 bits a sample; use .png or .tif");
    OIIO::ImageSpec head(picture.width, picture.height, 1, OIIO::TypeUInt16);
    head.attribute("DateTime", "");  // the time would make each file another one
    if (isTiff(fileName)) {
        head.attribute("Compression", "zip");
        head.attribute("tiff:Predictor", 2);
    }
    std::vector<unsigned char> bytes;
    OIIO::Filesystem::IOVecOutput memory(bytes);
    const char* suffix = isTiff(fileName) ? ".tif" : ".png";
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(suffix + 1);
    if (output) output->threads(1);  // frames are written side by side, one thread each
    const bool done = output && output->set_ioproxy(&memory) &&
                      output->open(std::string("frame") + suffix, head) &&
                      output->write_image(OIIO::TypeUInt16, picture.samples.data()) &&
                      output->close();
    if (!done)
        throw MediaError(MediaErrorKind::ReadWrite,
                         shown(path) + ": the picture cannot be encoded (" +
                             shown(output ? output->geterror() : OIIO::geterror()) + ")");
    return bytes;
}

}  // namespace media
