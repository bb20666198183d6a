#include "host/editor/SweepRenderer.h"

#include <algorithm>
#include <exception>

#include "host/imaging/Areas.h"
#include "host/imaging/PictureViews.h"

namespace editor {

namespace {

SweepRenderer::Cell cellOf(const document::Variant& variant, int longestSide) {
    SweepRenderer::Cell cell;
    if (!variant.picture) return cell;
    const HkImage& picture = *variant.picture;
    const int count = variant.showsObjects ? countWhiteAreas(picture) : -1;
    if (count >= 0) cell.objects = count;
    const int side = std::max(picture.roiWidth, picture.roiHeight);
    cell.picture = reducedPicture(picture, std::max(1, side / longestSide));
    return cell;
}

}  // namespace

quint64 SweepRenderer::start(const std::shared_ptr<const media::MediaSource>& source, qint64 frame,
                             const document::ParameterSweep& columns,
                             const std::optional<document::ParameterSweep>& rows, int longestSide) {
    stop();
    const quint64 number = ++m_run;
    if (!source) return number;
    const std::size_t count = columns.values.size() * (rows ? rows->values.size() : 1);
    m_variants = std::make_unique<document::VariantRenderer>(columns, rows);
    m_thread = std::thread([=] { run(number, source, frame, count, longestSide); });
    return number;
}

void SweepRenderer::stop() {
    m_isStopping = true;
    if (m_thread.joinable()) m_thread.join();
    m_isStopping = false;
    m_variants.reset();
}

void SweepRenderer::run(quint64 number, const std::shared_ptr<const media::MediaSource>& source,
                        qint64 frame, std::size_t count, int longestSide) {
    std::size_t done = 0;
    try {
        m_variants->render(source->read(frame), frame, [&](const document::Variant& variant) {
            m_deliver(number, done++, cellOf(variant, longestSide));
            return !m_isStopping;
        });
    } catch (const std::exception&) {
        // The preview of this frame says why; here the pictures are missing.
        while (done < count) m_deliver(number, done++, Cell());
    }
}

}  // namespace editor
