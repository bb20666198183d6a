#include "host/kernel/FilterElement.h"

#include <QCoreApplication>
#include <QSet>
#include <QTextStream>

#include "host/kernel/ParamValue.h"

namespace {

const QString kFilter = QStringLiteral("filter");
const QString kParameter = QStringLiteral("parameter");
const QString kKey = QStringLiteral("key");
const QString kType = QStringLiteral("type");
const QString kAnimated = QStringLiteral("animated");
const QString kName = QStringLiteral("name");
const QString kValue = QStringLiteral("value");
const QString kFrame = QStringLiteral("frame");
const QString kHeld = QStringLiteral("held");

QString tr(const char* text) {
    return QCoreApplication::translate("FilterElement", text);
}

QString boolText(bool value) {
    return paramValueText(value);
}

/// What is wrong with an element; thrown and caught in this file only.
struct Unreadable {
    QString reason;
};

QString requiredAttribute(const QDomElement& element, const QString& name) {
    if (!element.hasAttribute(name))
        throw Unreadable{tr("<%1> without attribute \"%2\"").arg(element.tagName(), name)};
    return element.attribute(name);
}

bool boolAttribute(const QDomElement& element, const QString& name) {
    if (!element.hasAttribute(name)) return false;
    const auto value = convertParamValue(element.attribute(name), QMetaType::Bool);
    if (!value)
        throw Unreadable{
            tr("%1=\"%2\" is neither true nor false").arg(name, element.attribute(name))};
    return value->toBool();
}

QVariant valueAttribute(const QDomElement& element, const ParamDescr& param) {
    const QString text = requiredAttribute(element, kValue);
    const auto value = convertParamValue(text, param.type);
    if (!value)
        throw Unreadable{tr("value \"%1\" is no %2")
                             .arg(text, QString::fromLatin1(QMetaType(param.type).name()))};
    return *value;
}

InstanceParam readParameter(const QDomElement& element, const ParamDescr& descr) {
    InstanceParam param;
    param.base = valueAttribute(element, descr);
    for (QDomElement child = element.firstChildElement(kKey); !child.isNull();
         child = child.nextSiblingElement(kKey)) {
        if (descr.kind == ParamDescr::Constant)
            throw Unreadable{tr("a parameter with one value for all frames has keys")};
        bool isFrame = false;
        const QString frameText = requiredAttribute(child, kFrame);
        const qint64 frame = frameText.toLongLong(&isFrame);
        if (!isFrame) throw Unreadable{tr("frame \"%1\" is no whole number").arg(frameText)};
        const bool held = boolAttribute(child, kHeld) || descr.kind == ParamDescr::Stepped;
        if (!param.keys.emplace(frame, ParamKey{valueAttribute(child, descr), held}).second)
            throw Unreadable{tr("two keys at frame %1").arg(frame)};
    }
    return param;
}

QString elementText(const QDomElement& element) {
    QString text;
    QTextStream stream(&text);
    element.save(stream, -1);
    return text;
}

InstanceState readState(const QDomElement& element, const HkKernelObjectDataDescr& descr) {
    if (filterElementType(element) != descr.typeId())
        throw Unreadable{tr("the element is not one of filter type %1").arg(descr.typeId())};
    InstanceState state = defaultState(descr);
    state.name = element.attribute(kName).simplified();
    state.animated = boolAttribute(element, kAnimated);
    QSet<QString> seen;
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        if (child.tagName() != kParameter) {
            state.keptElements << elementText(child);
            continue;
        }
        const QString name = requiredAttribute(child, kName);
        if (seen.contains(name)) throw Unreadable{tr("two parameters \"%1\"").arg(name)};
        seen.insert(name);
        const int index = descr.indexOf(name);
        if (index < 0) {
            state.keptElements << elementText(child);
            continue;
        }
        try {
            state.params[index] = readParameter(child, descr.param(index));
        } catch (const Unreadable& problem) {
            throw Unreadable{tr("parameter \"%1\": %2").arg(name, problem.reason)};
        }
    }
    return state;
}

QDomElement writeParameter(QDomDocument& document, const QString& name,
                           const InstanceParam& param) {
    QDomElement element = document.createElement(kParameter);
    element.setAttribute(kName, name);
    element.setAttribute(kValue, paramValueText(param.base));
    for (const auto& [frame, key] : param.keys) {
        QDomElement child = document.createElement(kKey);
        child.setAttribute(kFrame, QString::number(frame));
        child.setAttribute(kValue, paramValueText(key.value));
        child.setAttribute(kHeld, boolText(key.held));
        element.appendChild(child);
    }
    return element;
}

}  // namespace

QDomElement writeFilterElement(QDomDocument& document, int typeId, const QString& key,
                               const InstanceState& state, const HkKernelObjectDataDescr& descr) {
    QDomElement element = document.createElement(kFilter);
    element.setAttribute(kType, QString::number(typeId));
    if (!key.isEmpty()) element.setAttribute(kKey, key);
    if (!state.name.isEmpty()) element.setAttribute(kName, state.name);
    element.setAttribute(kAnimated, boolText(state.animated));
    for (int i = 0; i < descr.paramCount(); ++i)
        element.appendChild(writeParameter(document, descr.param(i).name, state.params[i]));
    for (const QString& text : state.keptElements) {
        QDomDocument kept;
        if (kept.setContent(text))
            element.appendChild(document.importNode(kept.documentElement(), true));
    }
    return element;
}

int filterElementType(const QDomElement& element) {
    bool isNumber = false;
    const int type = element.attribute(kType).toInt(&isNumber);
    return element.tagName() == kFilter && isNumber && type > 0 ? type : 0;
}

std::optional<InstanceState> readFilterElement(const QDomElement& element,
                                               const HkKernelObjectDataDescr& descr,
                                               QString* error) {
    try {
        return readState(element, descr);
    } catch (const Unreadable& problem) {
        if (error) *error = problem.reason;
        return std::nullopt;
    }
}
