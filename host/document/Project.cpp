#include "host/document/Project.h"

#include <QDomDocument>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>
#include <filesystem>
#include <optional>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkKernelObjectData.h"
#include "host/kernel/FilterElement.h"
#include "host/kernel/KernelStore.h"

namespace document {

namespace {

const QString kProject = QStringLiteral("fxproject");
const QString kVersion = QStringLiteral("version");
const QString kInput = QStringLiteral("input");
const QString kRange = QStringLiteral("range");
const QString kFile = QStringLiteral("file");
const QString kPath = QStringLiteral("path");
const QString kHex = QStringLiteral("hex");  // a path that is no text
const QString kChain = QStringLiteral("chain");
const QString kFilter = QStringLiteral("filter");
const int kThisVersion = 1;

// --- Checks before a tree is built ---

/// Parsers compare the attributes of one tag with one another: a tag as long as the file would keep
/// them busy for hours.
void requireShortTags(const QByteArray& bytes) {
    int line = 1, tagBegin = 0;
    for (int i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\n') ++line;
        if (bytes[i] == '<') tagBegin = i;
        if (i - tagBegin >= kProjectLimits.tagBytes)
            throw ProjectError(
                QStringLiteral(
                    "line %1: more than %2 KiB without a new tag, a fixed limit; this is no "
                    "project")
                    .arg(line)
                    .arg(kProjectLimits.tagBytes >> 10));
    }
}

[[noreturn]] void failAt(const QXmlStreamReader& reader, const QString& problem) {
    throw ProjectError(QStringLiteral("line %1: %2").arg(reader.lineNumber()).arg(problem));
}

QString limitText(std::int64_t limit, const char* of) {
    return QStringLiteral("more than %1 %2, the fixed limit of a project; split it")
        .arg(limit)
        .arg(QLatin1String(of));
}

void checkRoot(const QXmlStreamReader& reader) {
    if (reader.name() != kProject)
        failAt(reader, QStringLiteral("the file begins with <%1> instead of <%2>; this is no "
                                      "project")
                           .arg(reader.name().toString(), kProject));
    bool isNumber = false;
    const QString text = reader.attributes().value(kVersion).toString();
    const int version = text.toInt(&isNumber);
    if (!isNumber || version < 1)
        failAt(reader, QStringLiteral("version \"%1\" is no version of a project; write %2")
                           .arg(text)
                           .arg(kThisVersion));
    if (version > kThisVersion)
        failAt(reader, QStringLiteral("the project is of version %1, this program reads up to %2; "
                                      "use a newer one")
                           .arg(version)
                           .arg(kThisVersion));
}

/// Reads the text once without keeping anything. Throws where a tree would be refused, dangerous
/// to build, or too large.
void checkStructure(const QString& text) {
    QXmlStreamReader reader(text);
    int depth = 0, filters = 0;
    std::int64_t elements = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::DTD:
                failAt(reader, QStringLiteral("projects have no DOCTYPE; remove it"));
            case QXmlStreamReader::StartElement:
                if (depth == 0) checkRoot(reader);
                if (++depth > kProjectLimits.depth)
                    failAt(reader, limitText(kProjectLimits.depth, "levels of elements"));
                if (++elements > kProjectLimits.elements)
                    failAt(reader, limitText(kProjectLimits.elements, "elements"));
                if (reader.attributes().size() > kProjectLimits.attributes)
                    failAt(reader,
                           limitText(kProjectLimits.attributes, "attributes of one element"));
                if (depth == 3 && reader.name() == kFilter && ++filters > kProjectLimits.filters)
                    failAt(reader, limitText(kProjectLimits.filters, "filters"));
                break;
            case QXmlStreamReader::EndElement:
                --depth;
                break;
            default:
                break;
        }
    }
    if (reader.hasError())
        failAt(
            reader,
            QStringLiteral("the project is damaged (%1)").arg(reader.errorString().simplified()));
}

QDomElement parsed(QDomDocument& document, const QByteArray& bytes) {
    if (bytes.size() > kProjectLimits.bytes)
        throw ProjectError(QStringLiteral("the file has %1 MiB, a project at most %2, a fixed "
                                          "limit; this is no project")
                               .arg(bytes.size() >> 20)
                               .arg(kProjectLimits.bytes >> 20));
    if (bytes.isEmpty())
        throw ProjectError(QStringLiteral("the file is empty; this is no project"));
    requireShortTags(bytes);
    const QString text = QString::fromUtf8(bytes);
    const QByteArray byteOrderMark("\xEF\xBB\xBF");
    if (text.toUtf8() != (bytes.startsWith(byteOrderMark) ? bytes.mid(3) : bytes))
        throw ProjectError(
            QStringLiteral("the file is not UTF-8 throughout; it is damaged or no "
                           "project"));
    checkStructure(text);
    if (!document.setContent(text))
        throw ProjectError(QStringLiteral("the project is damaged; no tree can be built of it"));
    return document.documentElement();
}

// --- Elements as text ---

/// A toolkit's tree writes attributes in the order of a hash, which differs from run to run.
void writeElement(QXmlStreamWriter& out, const QDomElement& element) {
    out.writeStartElement(element.tagName());
    const QDomNamedNodeMap attributes = element.attributes();
    QStringList names;
    for (int i = 0; i < attributes.count(); ++i) names << attributes.item(i).nodeName();
    // What names the element stands in front.
    const QStringList front = {QStringLiteral("type"), QStringLiteral("name"),
                               QStringLiteral("frame")};
    std::sort(names.begin(), names.end(), [&](const QString& a, const QString& b) {
        const bool first = front.contains(a), second = front.contains(b);
        return first != second ? first : a < b;
    });
    for (const QString& name : names) out.writeAttribute(name, element.attribute(name));
    for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (child.isElement()) writeElement(out, child.toElement());
        if (child.isText() || child.isCDATASection()) out.writeCharacters(child.nodeValue());
        if (child.isComment()) out.writeComment(child.nodeValue());
    }
    out.writeEndElement();
}

void writeKept(QXmlStreamWriter& out, const QString& xml) {
    QDomDocument kept;
    if (kept.setContent(xml)) writeElement(out, kept.documentElement());
}

QString elementText(const QDomElement& element) {
    QString text;
    QXmlStreamWriter out(&text);
    writeElement(out, element);
    return text;
}

// --- Paths ---

std::string absolutePath(const std::string& path, const std::string& folder) {
    const std::filesystem::path given(path);
    return given.is_absolute() || folder.empty() ? path
                                                 : (std::filesystem::path(folder) / given).string();
}

/// Relative where the path lies below the folder, so that both can move together.
std::string pathSeenFrom(const std::string& path, const std::string& folder) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(path, error).lexically_normal();
    if (error) return path;
    const auto base = std::filesystem::absolute(folder.empty() ? "." : folder, error);
    if (error) return absolute.string();
    const auto relative = absolute.lexically_relative(base.lexically_normal());
    const bool below = !relative.empty() && *relative.begin() != ".." && !relative.is_absolute();
    return below ? relative.string() : absolute.string();
}

bool isXmlText(const std::string& bytes) {
    const QString text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    return text.toStdString() == bytes && std::none_of(bytes.begin(), bytes.end(), [](char c) {
               return static_cast<unsigned char>(c) < 0x20;
           });
}

std::string filePath(const QDomElement& file) {
    if (file.hasAttribute(kHex))
        return QByteArray::fromHex(file.attribute(kHex).toLatin1()).toStdString();
    return file.attribute(kPath).toStdString();
}

// --- The parts of a project ---

void readInput(const QDomElement& element, const std::string& folder, Project& project) {
    project.range = element.attribute(kRange).toStdString();
    for (QDomElement file = element.firstChildElement(kFile); !file.isNull();
         file = file.nextSiblingElement(kFile)) {
        const std::string path = filePath(file);
        if (path.empty() || path.find('\0') != std::string::npos)
            throw ProjectError(QStringLiteral("line %1: a <file> of the input has no path; name "
                                              "one, or remove it")
                                   .arg(file.lineNumber()));
        project.inputs.push_back(absolutePath(path, folder));
    }
}

void writeInput(QXmlStreamWriter& out, const Project& project, const std::string& folder) {
    if (project.inputs.empty() && project.range.empty()) return;
    out.writeStartElement(kInput);
    if (!project.range.empty()) out.writeAttribute(kRange, QString::fromStdString(project.range));
    for (const std::string& input : project.inputs) {
        const std::string path = pathSeenFrom(input, folder);
        out.writeEmptyElement(kFile);
        if (isXmlText(path))
            out.writeAttribute(kPath, QString::fromStdString(path));
        else
            out.writeAttribute(kHex, QString::fromLatin1(QByteArray::fromStdString(path).toHex()));
    }
    out.writeEndElement();
}

QString filterName(const QDomElement& element) {
    const QString key = element.attribute(QStringLiteral("key"));
    return key.isEmpty() ? QStringLiteral("type ") + element.attribute(QStringLiteral("type"))
                         : key;
}

/// The instances that a project adds to the store, gone again unless the whole project was good.
class NewInstances {
public:
    NewInstances() = default;
    NewInstances(const NewInstances&) = delete;
    NewInstances& operator=(const NewInstances&) = delete;
    ~NewInstances() {
        for (const int objectId : m_objectIds) KernelStore::instance().remove(objectId);
    }

    int last() const { return m_objectIds.empty() ? -1 : m_objectIds.back(); }

    void construct(const QDomElement& element, int typeId, std::vector<std::string>& notices) {
        KernelStore& store = KernelStore::instance();
        const HkKernelObjectData* made = store.manipulator(typeId)->constructDataObject(element);
        if (!made) {
            QString reason;
            readFilterElement(element, *HkFXKernelData::getInstance()->getDataDescriptor(typeId),
                              &reason);
            throw ProjectError(QStringLiteral("line %1: the filter \"%2\" cannot be read: %3")
                                   .arg(element.lineNumber())
                                   .arg(filterName(element), reason));
        }
        m_objectIds.push_back(store.instances().back().objectId);
        const std::optional<InstanceState> state = store.state(last());
        if (!state) return;
        for (const QString& kept : state->keptElements)
            notices.push_back(QStringLiteral("the filter \"%1\" has settings that are not known "
                                             "here and are kept: %2")
                                  .arg(store.filterKey(typeId), kept.left(80))
                                  .toStdString());
    }

    /// The new instances take the place of all others.
    void keep() {
        KernelStore& store = KernelStore::instance();
        for (const InstanceId& instance : store.instances())
            if (std::find(m_objectIds.begin(), m_objectIds.end(), instance.objectId) ==
                m_objectIds.end())
                store.remove(instance.objectId);
        m_objectIds.clear();
    }

private:
    std::vector<int> m_objectIds;
};

void readChain(const QDomElement& chain, NewInstances& instances, Project& project,
               std::vector<std::string>& notices) {
    for (QDomElement element = chain.firstChildElement(); !element.isNull();
         element = element.nextSiblingElement()) {
        const int typeId = filterElementType(element);
        if (typeId != 0 && KernelStore::instance().manipulator(typeId)) {
            instances.construct(element, typeId, notices);
            continue;
        }
        project.keptFilters.push_back({instances.last(), elementText(element)});
        notices.push_back(QStringLiteral("line %1: the filter \"%2\" is not known here; it is kept "
                                         "but does nothing")
                              .arg(element.lineNumber())
                              .arg(filterName(element))
                              .toStdString());
    }
}

void writeChain(QXmlStreamWriter& out, const Project& project) {
    out.writeStartElement(kChain);
    const auto writeKeptAfter = [&](int objectId) {
        for (const KeptFilter& kept : project.keptFilters)
            if (kept.afterObjectId == objectId) writeKept(out, kept.xml);
    };
    const KernelStore& store = KernelStore::instance();
    writeKeptAfter(-1);
    QDomDocument document;
    for (const InstanceId& instance : store.instances()) {
        writeElement(
            out, store.manipulator(instance.typeId)->saveDataObject(instance.objectId, document));
        writeKeptAfter(instance.objectId);
    }
    // What followed an instance that is gone is not lost with it.
    for (const KeptFilter& kept : project.keptFilters)
        if (kept.afterObjectId != -1 && store.positionOf(kept.afterObjectId) < 0)
            writeKept(out, kept.xml);
    out.writeEndElement();
}

}  // namespace

Project readProject(const QByteArray& bytes, const std::string& folder,
                    std::vector<std::string>& notices) {
    QDomDocument document;
    const QDomElement root = parsed(document, bytes);
    Project project;
    NewInstances instances;
    for (QDomElement part = root.firstChildElement(); !part.isNull();
         part = part.nextSiblingElement()) {
        if (part.tagName() == kInput) {
            readInput(part, folder, project);
        } else if (part.tagName() == kChain) {
            readChain(part, instances, project, notices);
        } else {
            project.keptElements << elementText(part);
            notices.push_back(QStringLiteral("line %1: <%2> is not known here and is kept")
                                  .arg(part.lineNumber())
                                  .arg(part.tagName())
                                  .toStdString());
        }
    }
    instances.keep();
    return project;
}

QByteArray writeProject(const Project& project, const std::string& folder) {
    QByteArray bytes;
    QXmlStreamWriter out(&bytes);
    out.setAutoFormatting(true);
    out.setAutoFormattingIndent(1);
    out.writeStartDocument();
    out.writeStartElement(kProject);
    out.writeAttribute(kVersion, QString::number(kThisVersion));
    writeInput(out, project, folder);
    writeChain(out, project);
    for (const QString& kept : project.keptElements) writeKept(out, kept);
    out.writeEndElement();
    out.writeEndDocument();
    return bytes;
}

}  // namespace document
