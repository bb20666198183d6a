#include "host/document/FilterSettings.h"

#include <QStringList>
#include <cmath>
#include <limits>

#include "host/document/FilterError.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"

namespace document {

namespace {

/// One parameter of one filter, and how its values are read.
class ParameterReader {
public:
    ParameterReader(const FilterCatalog& catalog, int typeId, const QString& key, int index)
        : m_descr(catalog.descriptor(typeId)),
          m_param(m_descr.param(index)),
          m_isSwitch(FilterCatalog::isSwitch(m_descr, index)),
          m_catalog(catalog),
          m_typeId(typeId),
          m_index(index),
          m_where(key + ": ") {}

    /// The value as one of the declared type, inside the range.
    QVariant read(const QString& text) const {
        QVariant value = typed(text);
        if (isNumber() && value != m_param.defaultValue) checkRange(value.toDouble(), text);
        return value;
    }

    bool takesKeys() const { return m_param.kind != ParamDescr::Constant; }

    [[noreturn]] void refuse(const QString& text, const QString& why) const {
        throw FilterError(
            QStringLiteral("%1%2=%3 %4%5").arg(m_where, m_param.name, text, why, validValues()));
    }

private:
    bool isNumber() const {
        return m_param.type == QMetaType::Int || m_param.type == QMetaType::Double;
    }

    QVariant typed(const QString& text) const {
        const bool isWord = text == QLatin1String("true") || text == QLatin1String("false");
        switch (m_param.type) {
            case QMetaType::Bool:
                if (!isWord && text != QLatin1String("0") && text != QLatin1String("1"))
                    refuse(text, QStringLiteral("is neither true nor false"));
                return isWord ? text == QLatin1String("true") : text == QLatin1String("1");
            case QMetaType::Int:
                if (m_isSwitch && isWord) return text == QLatin1String("true") ? 1 : 0;
                return wholeNumber(text);
            case QMetaType::Double:
                return number(text);
            default:
                return text;
        }
    }

    int wholeNumber(const QString& text) const {
        const double value = number(text);
        if (std::floor(value) != value) refuse(text, QStringLiteral("is not a whole number"));
        if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
            refuse(text, QStringLiteral("is out of range"));
        return static_cast<int>(value);
    }

    double number(const QString& text) const {
        bool isNumeral = false;
        const double value = text.toDouble(&isNumeral);
        if (!isNumeral || !std::isfinite(value)) refuse(text, QStringLiteral("is not a number"));
        return value;
    }

    void checkRange(double value, const QString& text) const {
        const auto range = m_catalog.range(m_typeId, m_index);
        if (range && (value < range->lowest || value > range->highest))
            refuse(text, QStringLiteral("is out of range"));
    }

    QString validValues() const {
        if (m_param.type == QMetaType::Bool || m_isSwitch)
            return QStringLiteral("; valid: true, false");
        const auto range = isNumber() ? m_catalog.range(m_typeId, m_index) : std::nullopt;
        if (!range)
            return m_param.type == QMetaType::Int ? QStringLiteral("; valid: a whole number")
                                                  : QStringLiteral("; valid: a number");
        return QStringLiteral("; valid: %1 to %2").arg(range->lowest).arg(range->highest);
    }

    const HkKernelObjectDataDescr& m_descr;
    const ParamDescr& m_param;
    const bool m_isSwitch;
    const FilterCatalog& m_catalog;
    const int m_typeId;
    const int m_index;
    const QString m_where;
};

}  // namespace

InstanceState settingsFromText(const FilterText& text, const FilterCatalog& catalog) {
    const int typeId = catalog.typeOf(text.key);
    InstanceState state = defaultState(catalog.descriptor(typeId));
    for (const ParameterText& parameter : text.parameters) {
        const int index = catalog.parameterIndex(typeId, parameter.name);
        const ParameterReader reader(catalog, typeId, text.key, index);
        const bool isStepped = catalog.descriptor(typeId).param(index).kind == ParamDescr::Stepped;
        InstanceParam& param = state.params.at(static_cast<std::size_t>(index));
        for (const ValueText& value : parameter.values) {
            const QVariant typed = reader.read(value.text);
            if (!parameter.animated) {
                param.base = typed;
                continue;
            }
            if (!reader.takesKeys())
                throw FilterError(QStringLiteral("%1: %2 has one value for all frames; write %2=%3")
                                      .arg(text.key, parameter.name, value.text));
            param.keys[value.frame] = ParamKey{typed, isStepped || value.held};
            state.animated = true;
        }
    }
    return state;
}

QString textFromSettings(int typeId, const InstanceState& state, const FilterCatalog& catalog) {
    const HkKernelObjectDataDescr& descr = catalog.descriptor(typeId);
    QStringList parameters;
    for (int index = 0; index < descr.paramCount(); ++index) {
        const InstanceParam& param = state.params.at(static_cast<std::size_t>(index));
        const QString name = descr.param(index).name + QLatin1Char('=');
        if (state.animated && !param.keys.empty())
            parameters << name + textFromKeys(param.keys);
        else if (param.base != descr.param(index).defaultValue)
            parameters << name + paramValueText(param.base);
    }
    const QString key = KernelStore::instance().filterKey(typeId);
    return parameters.isEmpty() ? key : key + QLatin1Char(':') + parameters.join(QLatin1Char(','));
}

QString textFromKeys(const ParamTrack& keys) {
    QStringList texts;
    for (const auto& [frame, key] : keys)
        texts << QString::number(frame) + QLatin1String(key.held ? "|=" : "=") +
                     paramValueText(key.value);
    return texts.join(QLatin1Char(';'));
}

}  // namespace document
