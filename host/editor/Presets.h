#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "host/document/FilterChain.h"

namespace editor {

// A preset is a text file (*.fxpreset): a filter a line, as the command line takes it after -f.
// Lines that begin with # are remarks. Reading and writing throw as host/media and host/document.

struct Preset {
    QString name;
    QString file;
};

/// Those in the user's folder, by name.
std::vector<Preset> knownPresets();
QString presetFolder();

std::vector<document::FilterSetup> readPreset(const QString& file,
                                              const document::FilterCatalog& catalog);
void writePreset(const QString& file, const QStringList& filterTexts);

}  // namespace editor
