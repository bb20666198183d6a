#pragma once

#include <QString>

namespace editor {
class EditorSession;
class MainWindow;
}  // namespace editor

// Trials of what stays when the editor is killed. Each says what it saw; 0 when all was as
// promised.

/// Edits in `window` for ever, as a person does, and notes each state of the document in
/// `folder`/log before anything can be lost. The pictures are in `folder`/shots.
[[noreturn]] void editForever(editor::MainWindow& window, const QString& folder, unsigned seed);

/// Lets this program edit and kills it at a random moment, `count` times. The document that is then
/// recovered or reopened lacks at most the last 5 seconds or one step.
int killEdits(editor::EditorSession& session, unsigned seed, int count);

/// Kills a process that saves again and again, `count` times: the file holds one state or the
/// other, whole. The same with a plain write, as control, tears.
int killSaves(editor::EditorSession& session, unsigned seed, int count);
