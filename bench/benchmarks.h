#pragma once

/// What main registers, kernel by kernel. Names are kernel/scene/WIDTHxHEIGHT/library, where our
/// own library is "numeric"; bench/ratios.py relies on it.
namespace benchmarks {

void addDistance();
void addElementwise();
void addPeakStep();

}  // namespace benchmarks
