#include "host/document/PageFacts.h"

#include <QAbstractButton>
#include <QMetaProperty>
#include <QUndoStack>
#include <map>
#include <utility>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/PageLabels.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/PluginGuard.h"

namespace document {

namespace {

/// What each control of a page shows: the property that its class declares to be the user's.
using Shown = std::map<QWidget*, QVariant>;

/// An instance that exists only to be looked at.
class Specimen {
public:
    explicit Specimen(int typeId)
        : m_manipulator(*KernelStore::instance().manipulator(typeId)),
          m_usersStack(KernelStore::undoStackOf(m_manipulator)) {
        m_manipulator.setUndoStack(&m_ownStack);
        m_objectId = KernelStore::instance().add(typeId);
        const FxGuiImageFilter* entry = m_manipulator.getFilterGui(m_objectId);
        m_page = entry ? entry->controlPage : nullptr;
        if (!m_page) return;
        for (QWidget* widget : m_page->findChildren<QWidget*>())
            if (widget->metaObject()->userProperty().isValid()) m_controls.append(widget);
    }

    ~Specimen() {
        KernelStore::instance().remove(m_objectId);
        m_manipulator.setUndoStack(m_usersStack);
    }

    Specimen(const Specimen&) = delete;
    Specimen& operator=(const Specimen&) = delete;

    QWidget* page() const { return m_page; }
    const QList<QWidget*>& controls() const { return m_controls; }

    /// Shows the value, and returns what comes back when the page is committed. The store announces
    /// the new value, and with that the page shows it.
    QVariant throughPage(int paramIndex, const QVariant& value) {
        KernelStore::instance().setBaseValue(m_objectId, paramIndex, value);
        m_manipulator.commitGuiChanges(m_objectId);
        return KernelStore::instance().state(m_objectId)->params[paramIndex].base;
    }

    Shown shown() const {
        Shown all;
        for (QWidget* control : m_controls)
            all[control] = control->metaObject()->userProperty().read(control);
        return all;
    }

private:
    HkFilterManipulator& m_manipulator;
    QUndoStack* const m_usersStack;
    QUndoStack m_ownStack;
    int m_objectId = -1;
    QWidget* m_page = nullptr;
    QList<QWidget*> m_controls;
};

/// Finds the facts about one parameter.
class Question {
public:
    Question(Specimen& specimen, int paramIndex) : m_specimen(specimen), m_index(paramIndex) {}

    ParameterFacts answer(QMetaType::Type type) {
        if (type == QMetaType::Bool)
            for (const bool value : {false, true}) show(value);
        else if (type == QMetaType::Int || type == QMetaType::Double)
            askForNumbers();
        if (!m_own.isEmpty()) askForTexts();
        return m_facts;
    }

private:
    QVariant show(const QVariant& value) {
        const QVariant back = m_specimen.throughPage(m_index, value);
        Shown now = m_specimen.shown();
        if (!m_last.empty())
            for (QWidget* control : m_specimen.controls())
                if (now[control] != m_last[control] && !m_own.contains(control))
                    m_own.append(control);
        m_last = std::move(now);
        return back;
    }

    void askForNumbers() {
        // Beyond every sensible control, and yet far from overflowing a page that scales by a
        // thousand.
        const double farOut = 1e6;
        const ParameterRange ends = {show(-farOut).toDouble(), show(farOut).toDouble()};
        if (ends.lowest == -farOut || ends.highest == farOut) return;
        if (ends.lowest < ends.highest)
            m_facts.range = ends;
        else
            askForChoices();
    }

    /// A row of buttons does not clamp: it shows the values it has a button for and no other.
    void askForChoices() {
        const int fewestChoice = -16, mostChoice = 64;
        std::vector<std::pair<int, Shown>> taken;
        for (int value = fewestChoice; value <= mostChoice; ++value)
            if (show(value) == value) taken.emplace_back(value, m_last);
        if (taken.empty()) return;
        m_facts.range = ParameterRange{double(taken.front().first), double(taken.back().first)};
        for (const auto& [value, shown] : taken) {
            const ParameterChoice choice = choiceShown(value, shown);
            if (!choice.text.isEmpty()) m_facts.choices.push_back(choice);
        }
    }

    ParameterChoice choiceShown(int value, const Shown& shown) const {
        for (QWidget* control : m_own) {
            const QVariant& shows = shown.at(control);
            const auto* button = qobject_cast<QAbstractButton*>(control);
            if (button && shows.toBool())
                return {value, plainText(button->text()), button->toolTip(), button->whatsThis()};
            if (shows.userType() == QMetaType::QString)
                return {value, shows.toString(), QString(), QString()};
        }
        return {value, QString(), QString(), QString()};
    }

    void askForTexts() {
        QWidget* const control = m_own.first();
        const PageLabels labels = labelsOf(control, m_own);
        if (labels.after.isEmpty()) {
            m_facts.label = labels.before;
        } else {
            m_facts.lowEnd = labels.before;
            m_facts.highEnd = labels.after;
        }
        if (!m_facts.choices.empty()) return;  // each of them explains itself
        const auto* box = qobject_cast<QAbstractButton*>(control);
        if (box) m_facts.label = plainText(box->text());
        // Over a control without words of its own the toolkit shows those of what it is in.
        for (QWidget* widget = control; widget; widget = widget->parentWidget()) {
            if (m_facts.toolTip.isEmpty()) m_facts.toolTip = widget->toolTip();
            if (m_facts.whatsThis.isEmpty()) m_facts.whatsThis = widget->whatsThis();
            if (widget == m_specimen.page()) break;
        }
    }

    Specimen& m_specimen;
    const int m_index;
    Shown m_last;
    QList<QWidget*> m_own;  ///< the controls that showed this parameter
    ParameterFacts m_facts;
};

std::vector<ParameterFacts> askPage(int typeId) {
    const HkKernelObjectDataDescr* descr = HkFXKernelData::getInstance()->getDataDescriptor(typeId);
    std::vector<ParameterFacts> facts(descr->paramCount());
    Specimen specimen(typeId);
    if (!specimen.page()) return facts;
    for (int index = 0; index < descr->paramCount(); ++index)
        facts[index] = Question(specimen, index).answer(descr->param(index).type);
    return facts;
}

}  // namespace

const std::vector<ParameterFacts>& pageFacts(int typeId) {
    // Never destroyed: manipulators that outlive main() still take their leave of it.
    static auto& known = *new std::map<const HkFilterManipulator*, std::vector<ParameterFacts>>;
    HkFilterManipulator* manipulator = KernelStore::instance().manipulator(typeId);
    auto found = known.find(manipulator);
    if (found == known.end()) {
        const PluginQuestion question(QStringLiteral("ask the page of the filter \"%1\"")
                                          .arg(KernelStore::instance().filterKey(typeId)));
        found = known.emplace(manipulator, askPage(typeId)).first;
        QObject::connect(manipulator, &QObject::destroyed,
                         [manipulator] { known.erase(manipulator); });
    }
    return found->second;
}

}  // namespace document
