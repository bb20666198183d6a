#include "host/document/FilterSettings.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "host/document/FilterError.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"

namespace document {

namespace {

/// One parameter of one filter, and how its values are read.
class ParameterReader {
public:
    ParameterReader(const FilterCatalog& catalog, int typeId, int index)
        : m_param(catalog.descriptor(typeId).param(index)),
          m_isSwitch(FilterCatalog::isSwitch(catalog.descriptor(typeId), index)),
          m_range(isNumber() ? catalog.range(typeId, index) : std::nullopt),
          m_choices(catalog.facts(typeId, index).choices),
          m_where(KernelStore::instance().filterKey(typeId) + ": " + m_param.name) {}

    /// The value as one of the declared type, inside the range.
    QVariant read(const QString& text) const {
        QVariant value = typed(text);
        if (value != m_param.defaultValue) checkRange(value, text);
        return value;
    }

    bool isStepped() const { return m_param.kind == ParamDescr::Stepped; }
    bool takesKeys() const { return m_param.kind != ParamDescr::Constant; }
    const QString& name() const { return m_param.name; }
    const QString& where() const { return m_where; }

    [[noreturn]] void refuse(const QString& text, const QString& why) const {
        throw FilterError(QStringLiteral("%1=%2 %3; valid: %4").arg(m_where, text, why, valid()));
    }

private:
    bool isNumber() const {
        return m_param.type == QMetaType::Int || m_param.type == QMetaType::Double;
    }

    QVariant typed(const QString& text) const {
        const bool isTrue = text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
        const bool isWord =
            isTrue || text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0;
        switch (m_param.type) {
            case QMetaType::Bool:
                if (!isWord && text != QLatin1String("0") && text != QLatin1String("1"))
                    refuse(text, QStringLiteral("is neither true nor false"));
                return isWord ? isTrue : text == QLatin1String("1");
            case QMetaType::Int:
                if (m_isSwitch && isWord) return isTrue ? 1 : 0;
                for (const ParameterChoice& choice : m_choices)
                    if (choice.text.compare(text, Qt::CaseInsensitive) == 0) return choice.value;
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
        if (!isNumeral || !std::isfinite(value))
            refuse(text, m_choices.empty() ? QStringLiteral("is not a number")
                                           : QStringLiteral("is none of the choices"));
        return value;
    }

    void checkRange(const QVariant& value, const QString& text) const {
        const double number = value.toDouble();
        if (m_range && (number < m_range->lowest || number > m_range->highest))
            refuse(text, QStringLiteral("is out of range"));
        const auto isMeant = [&value](const ParameterChoice& choice) {
            return choice.value == value.toInt();
        };
        if (!m_choices.empty() && std::none_of(m_choices.begin(), m_choices.end(), isMeant))
            refuse(text, QStringLiteral("is none of the choices"));
    }

    QString valid() const {
        if (m_param.type == QMetaType::Bool || m_isSwitch) return QStringLiteral("true, false");
        if (!m_choices.empty()) return FilterCatalog::choicesText(m_choices);
        if (m_range) return QStringLiteral("%1 to %2").arg(m_range->lowest).arg(m_range->highest);
        return m_param.type == QMetaType::Int ? QStringLiteral("a whole number")
                                              : QStringLiteral("a number");
    }

    const ParamDescr& m_param;
    const bool m_isSwitch;
    const std::optional<ParameterRange> m_range;
    const std::vector<ParameterChoice>& m_choices;
    const QString m_where;
};

}  // namespace

void applySettings(const FilterText& text, int typeId, const FilterCatalog& catalog,
                   InstanceState& state) {
    std::set<int> given;
    for (const ParameterText& parameter : text.parameters) {
        const int index = catalog.parameterIndex(typeId, parameter.name);
        const ParameterReader reader(catalog, typeId, index);
        if (!given.insert(index).second)
            throw FilterError(QStringLiteral("%1 is given twice").arg(reader.where()));
        InstanceParam& param = state.params.at(static_cast<std::size_t>(index));
        param.keys.clear();
        for (const ValueText& value : parameter.values) {
            const QVariant typed = reader.read(value.text);
            if (!parameter.animated) {
                param.base = typed;
                continue;
            }
            if (!reader.takesKeys())
                throw FilterError(QStringLiteral("%1 has one value for all frames; write %2=%3")
                                      .arg(reader.where(), reader.name(), value.text));
            if (!state.animated)  // keys that were not in force do not come into force with these
                for (InstanceParam& other : state.params) other.keys.clear();
            state.animated = true;
            param.keys[value.frame] = ParamKey{typed, reader.isStepped() || value.held};
        }
    }
}

InstanceState settingsFromText(const FilterText& text, const FilterCatalog& catalog) {
    const int typeId = catalog.typeOf(text.key);
    InstanceState state = defaultState(catalog.descriptor(typeId));
    applySettings(text, typeId, catalog, state);
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
