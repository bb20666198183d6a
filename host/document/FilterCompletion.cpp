#include "host/document/FilterCompletion.h"

#include <QStringList>
#include <cmath>
#include <set>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/FilterError.h"
#include "host/document/ParameterSweep.h"
#include "host/kernel/KernelStore.h"

namespace document {

namespace {

/// Collects what begins with the last piece of the text.
class Collector {
public:
    /// base: what precedes the piece and stays.
    /// isPart: more is likely to follow whatever fits.
    Collector(const QString& base, const QString& piece, bool isPart)
        : m_base(base), m_piece(piece), m_isPart(isPart) {}

    void offer(const QString& text, const QString& about) {
        if (text.startsWith(m_piece, Qt::CaseInsensitive))
            m_found.push_back({m_base + text, about, !m_isPart});
    }
    std::vector<Completion> found() const { return m_found; }

private:
    const QString m_base, m_piece;
    const bool m_isPart;
    std::vector<Completion> m_found;
};

void offerNumbers(Collector& collector, const ParameterRange& range, double defaultValue,
                  bool isWholeNumber) {
    const double mostToList = 16;
    std::set<double> numbers = {range.lowest, defaultValue, range.highest};
    if (isWholeNumber && range.highest - range.lowest < mostToList)
        for (double number = range.lowest; number <= range.highest; ++number)
            numbers.insert(number);
    for (const double number : numbers)
        collector.offer(QString::number(number, 'g', 12),
                        number == defaultValue ? QStringLiteral("default") : QString());
}

void offerValues(Collector& collector, const FilterCatalog& catalog, int typeId, int index) {
    const HkKernelObjectDataDescr& descr = catalog.descriptor(typeId);
    const ParamDescr& param = descr.param(index);
    const ParameterFacts& facts = catalog.facts(typeId, index);
    if (FilterCatalog::isSwitch(descr, index) || param.type == QMetaType::Bool) {
        for (const char* word : {"false", "true"}) collector.offer(word, QString());
    } else if (!facts.choices.empty()) {
        for (const ParameterChoice& choice : facts.choices)
            collector.offer(choice.text, choice.toolTip);
    } else if (const auto range = catalog.range(typeId, index)) {
        offerNumbers(collector, *range, param.defaultValue.toDouble(),
                     param.type == QMetaType::Int);
    }
}

void offerNames(Collector& collector, const FilterCatalog& catalog, int typeId,
                const QStringList& given) {
    const HkKernelObjectDataDescr& descr = catalog.descriptor(typeId);
    for (int index = 0; index < descr.paramCount(); ++index) {
        const QString name = descr.param(index).name;
        if (!given.contains(name, Qt::CaseInsensitive))
            collector.offer(name + '=', parameterLabel(catalog, typeId, index));
    }
}

/// Where the piece that is being typed begins.
qsizetype pieceBegin(const QString& typed, qsizetype colon, FilterNotation notation) {
    if (notation == FilterNotation::Settings)
        return std::max<qsizetype>(colon, typed.lastIndexOf(',')) + 1;
    return colon + 1;
}

}  // namespace

std::vector<Completion> completionsOf(const QString& typed, FilterNotation notation,
                                      const FilterCatalog& catalog) {
    const qsizetype colon = typed.indexOf(':');
    if (colon < 0) {
        Collector keys(QString(), typed, true);
        for (const int typeId : KernelStore::instance().types())
            keys.offer(KernelStore::instance().filterKey(typeId),
                       KernelStore::instance().manipulator(typeId)->filterTitle());
        return keys.found();
    }
    try {
        const int typeId = catalog.typeOf(filterOfSweep(typed));
        const qsizetype begin = pieceBegin(typed, colon, notation);
        const QString piece = typed.mid(begin);
        const qsizetype equals = piece.indexOf('=');
        if (equals < 0) {
            QStringList given;
            for (const QString& part : typed.mid(colon + 1, begin - colon - 1).split(','))
                given.append(part.section('=', 0, 0).trimmed());
            Collector names(typed.left(begin), piece, true);
            offerNames(names, catalog, typeId, given);
            return names.found();
        }
        // Of keys, "0=1;20=", and of values to try, "1,3,", the last one is being typed.
        const qsizetype last = std::max(typed.lastIndexOf('='), typed.lastIndexOf(',')) + 1;
        Collector values(typed.left(last), typed.mid(last), notation == FilterNotation::Sweep);
        offerValues(values, catalog, typeId,
                    catalog.parameterIndex(typeId, piece.left(equals).trimmed()));
        return values.found();
    } catch (const FilterError&) {
        return {};  // there is no such filter or parameter: nothing to go on with
    }
}

}  // namespace document
