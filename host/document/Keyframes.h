#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <set>

#include "host/document/FilterCatalog.h"
#include "host/kernel/InstanceState.h"

namespace document {

// What a timeline does to the keys of one instance. An instance has a key at a frame when any of
// its parameters has; all that have one there go together. These make new states; whoever asked
// puts them into the store.

using FrameSet = std::set<qint64>;

FrameSet keyFrames(const InstanceState& state);

/// The values in force at `frame` become keys there, of every parameter that can have keys.
InstanceState withKeyAt(const InstanceState& state, const HkKernelObjectDataDescr& descr,
                        qint64 frame);

/// Without the keys at these frames. Where the last key of a parameter goes, its value stays for
/// all frames, so that nothing jumps.
InstanceState withoutKeys(const InstanceState& state, const FrameSet& frames);

/// The keys at these frames move `by` frames and replace those they meet; none goes below frame 0,
/// nor past the last frame that has a number.
InstanceState withKeysMoved(const InstanceState& state, const FrameSet& frames, qint64 by);

/// The keys at these frames as a filter text ("Blur and enhance:Blur=0=1;20=13"), which the command
/// line takes as well. Empty when there are none.
QString textOfKeys(int typeId, const InstanceState& state, const FrameSet& frames,
                   const FilterCatalog& catalog);

/// The frame of the earliest key of a filter text; none when it has no keys. Throws FilterError
/// when the text is none.
std::optional<qint64> earliestKey(const QString& text);

/// The keys of a filter text put in by parameter name, moved `by` frames; the instance may be of
/// another filter. leftOut receives the names that this filter does not have.
/// Throws FilterError when the text is none, has no keys, or no name fits; also for a value that
/// the parameter cannot have.
InstanceState withKeysFromText(int typeId, const InstanceState& state, const QString& text,
                               qint64 by, const FilterCatalog& catalog, QStringList& leftOut);

}  // namespace document
