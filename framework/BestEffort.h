#pragma once

/// Around a call whose status is ignored on purpose: the step is worth trying, and the work goes on
/// with what there is when it fails.
template <class Status>
void bestEffort(Status) {}
