#pragma once

#include <QDialog>
#include <QVector>

#include "host/editor/EditorState.h"
#include "host/editor/Mailbox.h"
#include "host/editor/SweepRenderer.h"
#include "host/kernel/KernelStore.h"

class QComboBox;
class QSpinBox;

namespace editor {

class EditorDocument;
class SweepSheet;

/// Tries values of one parameter of a filter, or of two, on the frame that is shown: a sheet with a
/// picture for each. A click sets the values: the instance's own, or a key where it is animated.
class SweepDialog : public QDialog {
    Q_OBJECT

public:
    SweepDialog(EditorDocument& document, EditorState& state, InstanceId instance,
                QWidget* parent = nullptr);
    ~SweepDialog() override;

    void setCount(int count);
    bool isComplete() const;
    QRect cellRect(int index) const;  ///< in this dialog's coordinates, for a click

signals:
    void completed();

private:
    /// One of the two axes: which parameter, and which values of it.
    struct Axis {
        QComboBox* parameter;
        QSpinBox* count;
        int index() const;  ///< of the parameter; -1 for none
    };
    Axis makeAxis(int row, const QString& title, bool optional);
    QVector<QVariant> valuesOf(const Axis& axis) const;
    void keepApart();
    void render();
    void choose(int cell);

    EditorDocument& m_document;
    EditorState& m_state;
    InstanceId m_instance;
    Axis m_across, m_down;
    QVector<QVariant> m_acrossValues, m_downValues;
    SweepSheet* m_sheet;
    quint64 m_run = 0;
    int m_missing = 0;
    struct Rendered {
        quint64 run;
        std::size_t index;
        SweepRenderer::Cell cell;
    };
    Mailbox<Rendered> m_rendered;
    SweepRenderer m_renderer;  // last: its thread ends before the rest goes
};

}  // namespace editor
