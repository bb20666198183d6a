#pragma once

#include <QDomElement>
#include <QString>
#include <optional>

#include "host/kernel/KernelStore.h"

// One applied filter instance as an element of a document:
//
//   <filter type="2003" name="Soft edges" key="Blur and enhance" animated="true">
//     <parameter name="Enabled" value="1"/>
//     <parameter name="Blur" value="5">
//       <key frame="0" value="1" held="false"/>
//       <key frame="12" value="9" held="true"/>
//     </parameter>
//   </filter>
//
// "name" is what the user calls the instance, left out where that is the filter's title. "key" is
// for the reader's eyes; the type decides. Values are text in the C locale, "held" may be
// left out for false. A declared parameter that is missing has its default. Children of other
// names, and parameters that this version of the filter does not declare, are kept in the state.

/// The element of an instance, with everything that was kept aside.
FXKERNELAPI_EXPORT QDomElement writeFilterElement(QDomDocument& document, int typeId,
                                                  const QString& key, const InstanceState& state,
                                                  const HkKernelObjectDataDescr& descr);

/// The type id of a filter element, 0 when it is none.
FXKERNELAPI_EXPORT int filterElementType(const QDomElement& element);

/// The state that the element describes. Nothing, and one line in `error` that names the parameter
/// and what is wrong with it, when the element is not of the descriptor's type or cannot be read.
FXKERNELAPI_EXPORT std::optional<InstanceState> readFilterElement(
    const QDomElement& element, const HkKernelObjectDataDescr& descr, QString* error = nullptr);
