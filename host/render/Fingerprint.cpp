#include "host/render/Fingerprint.h"

#include <sys/stat.h>

#include <algorithm>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"
#include "host/media/file_names.h"
#include "host/render/ContentHash.h"

namespace render {

namespace {

std::string versionOf(const std::string& plugin) {
    std::string version = std::string("fxrender ") + FX_VERSION;
    if (!plugin.empty()) version += '\n' + hashOfFile(plugin).value_or("unreadable");
    return version;
}

}  // namespace

std::string Fingerprint::text() const {
    std::string joined;
    for (const std::string& part : parts) joined += (joined.empty() ? "" : "-") + part;
    return joined;
}

Fingerprint Fingerprint::fromText(const std::string& text) {
    Fingerprint fingerprint;
    std::size_t begin = 0;
    for (std::string& part : fingerprint.parts) {
        const std::size_t end = std::min(text.find('-', begin), text.size());
        part = text.substr(begin, end - begin);
        begin = std::min(end + 1, text.size());
    }
    return fingerprint;
}

std::string Fingerprint::differenceTo(const Fingerprint& other) const {
    const char* const names[] = {"the program", "the settings", "the input", "the output's format"};
    std::vector<std::string> changed;
    for (std::size_t part = 0; part < parts.size(); ++part)
        if (parts[part] != other.parts[part]) changed.emplace_back(names[part]);
    std::string text;
    for (std::size_t i = 0; i < changed.size(); ++i)
        text += (i == 0 ? "" : i + 1 == changed.size() ? " and " : ", ") + changed[i];
    return text;
}

Fingerprints::Fingerprints(const media::MediaSource& source, const OutputOrigin& origin)
    : m_source(source), m_version(hashOfText(versionOf(origin.plugin))), m_origin(origin) {
    const KernelStore& store = KernelStore::instance();
    for (const InstanceId& id : store.instances())
        m_filters.push_back({id.typeId, store.filterKey(id.typeId).toStdString(),
                             store.state(id.objectId).value_or(InstanceState())});
    std::set<std::string> seen;
    for (const std::int64_t frame : source.frames())
        if (const std::string path = source.path(frame); !seen.insert(path).second)
            m_sharedInputs.insert(path);
}

Fingerprint Fingerprints::of(std::int64_t frame, const std::string& output) const {
    Fingerprint fingerprint;
    fingerprint.parts[Fingerprint::Version] = m_version;
    fingerprint.parts[Fingerprint::Settings] = hashOfText(settingsAt(frame));
    fingerprint.parts[Fingerprint::Input] = hashOfText(inputAt(frame));
    fingerprint.parts[Fingerprint::Format] =
        hashOfText(media::suffixOf(media::fileNameOf(output)) + '\n' + m_origin.format);
    // A quarter of each hash tells versions of one thing apart.
    for (std::string& part : fingerprint.parts) part.resize(16);
    return fingerprint;
}

std::string Fingerprints::settingsAt(std::int64_t frame) const {
    std::string text = "range " + m_origin.range + '\n';
    for (const Filter& filter : m_filters) {
        const HkKernelObjectDataDescr& descr =
            *HkFXKernelData::getInstance()->getDataDescriptor(filter.typeId);
        // Filters that are switched off leave the frame as it is.
        if (!valueInForce(filter.state, descr, kEnabledParam, frame).toBool()) continue;
        text += filter.key + '\n';
        for (int index = 0; index < descr.paramCount(); ++index)
            text += ' ' + descr.param(index).name.toStdString() + '=' +
                    paramValueText(valueInForce(filter.state, descr, index, frame)).toStdString() +
                    '\n';
    }
    return text;
}

std::string Fingerprints::inputAt(std::int64_t frame) const {
    const std::string file = fileAt(frame);
    return m_origin.range == "auto" ? file + '\n' + fileAt(m_source.frames().front()) : file;
}

std::string Fingerprints::fileAt(std::int64_t frame) const {
    const std::string path = m_source.path(frame);
    std::string text = media::fileNameOf(path);
    struct stat status {};
    if (stat(path.c_str(), &status) == 0)
        text += '\n' + std::to_string(status.st_size) + '\n' +
                std::to_string(status.st_mtim.tv_sec) + '.' +
                std::to_string(status.st_mtim.tv_nsec);
    if (m_sharedInputs.count(path) > 0) text += "\nframe " + std::to_string(frame);
    return text;
}

}  // namespace render
