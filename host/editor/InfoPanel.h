#pragma once

#include <QWidget>

#include "host/editor/EditorState.h"

class QLabel;

namespace editor {

class HistogramView;

/// The levels of the picture, and the pixel under the pointer before and after, as numbers.
class InfoPanel : public QWidget {
    Q_OBJECT

public:
    explicit InfoPanel(EditorState& state, QWidget* parent = nullptr);

private:
    void showProbe();

    EditorState& m_state;
    HistogramView* m_histogram;
    QLabel* m_position;
    QLabel* m_values[3][2];  // RGB, YUV, HLS; before, after
};

}  // namespace editor
