#pragma once

#include <QRect>
#include <QStringList>
#include <vector>

namespace render {

/// One picture of the demonstration: the filters it runs the sample through, and what to show.
struct Demonstration {
    QStringList filters;  ///< as on the command line
    QString about;        ///< a few words on what there is to see
    QRect detail;         ///< the part of the result to show, enlarged; the whole when null
};

/// Tells the most about the filters with these keys: settings chosen for the sample picture, and
/// the filters it takes before a filter that is made for a two-level picture. A key that is not
/// known here is shown with its defaults.
std::vector<Demonstration> demonstrationsOf(const QString& key);

/// A piece of the sample picture with fine detail.
QRect sampleDetail();

}  // namespace render
