#pragma once

#include "host/document/FilterCatalog.h"
#include "host/render/CommandLine.h"
#include "host/render/ExitCode.h"
#include "host/render/Messages.h"

namespace render {

constexpr int kMostSheetPictures = 100;

/// Shows one frame with several values of a parameter, or of two, on one labelled sheet. Returns
/// Done; throws as runApply() does.
ExitCode runSheet(const SheetOptions& options, const document::FilterCatalog& catalog,
                  const Messages& messages);

}  // namespace render
