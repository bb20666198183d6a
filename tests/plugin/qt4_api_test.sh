#!/usr/bin/env bash
# qt4_api_test.sh SOURCE: the plug-in side keeps to what Qt 4.8 has. That toolkit cannot be installed everywhere, so this
# reads the sources instead of compiling them. It leaves out what stands between #if QT_VERSION >= 0x050000 and its #else
# or #endif, or behind the #else of the opposite, and then looks for
#   - headers of the toolkit that are not in the list below, all of which Qt 4.8 has,
#   - connections to functions instead of SIGNAL() and SLOT(), and to lambdas,
#   - macros, types and functions that came later, each named below,
#   - widgets in the forms that Qt 4.8 does not have or that the forms have not used so far.
# It cannot see a later overload of an old function.
set -euo pipefail
cd "$1"

headers='Qt(Global|Plugin)|Qt3Support/Q3ButtonGroup|Q(AbstractButton|AbstractSlider|CoreApplication|Cursor|Icon|MetaType'
headers+='|Mutex|MutexLocker|Object|Size|Slider|String|StringList|UndoCommand|UndoStack|Variant|Vector|Widget)'
later='QStringLiteral|QByteArrayLiteral|QStringView|QLatin1StringView|Q_PLUGIN_METADATA|Q_ENUM|Q_FLAG|Q_NAMESPACE|Q_GADGET_'
later+='|Q_DECL_(OVERRIDE|FINAL|NOEXCEPT|NULLPTR)|Q_NULLPTR|Q_FALLTHROUGH|qAsConst|[qQ]Overload|qUtf8Printable|qInfo\('
later+='|qEnvironmentVariable|QSignalBlocker|QRegularExpression|QJson|QStandardPaths|QCommandLine|QElapsedTimer::clock'
later+='|QMetaType::(UnknownType|fromType|User[0-9]|Q[A-Z][A-Za-z]*List)|QMetaMethod::fromSignal|connectNotify\(const QMetaMethod'
later+='|QVariant::typeId|typeId\(\)\.|QRandomGenerator|QOperatingSystemVersion|asprintf|\.chopped\(|u"|QTimer::singleShot\([^)]*\['
connections='connect\([^;]*&[A-Za-z_]+::|connect\([^;]*\['
widgets='QWidget|QGridLayout|QVBoxLayout|QHBoxLayout|Q3ButtonGroup|QLabel|QSlider|QRadioButton|QCheckBox|FxGui[A-Za-z]*'

# The lines that Qt 4 compiles, statements on one line each.
forQt4() {
    awk '/^ *#if QT_VERSION >= 0x050000/ { kept = 0; depth = 1; next }
         /^ *#if QT_VERSION < 0x050000/ { kept = 1; depth = 1; next }
         depth && /^ *#if/ { ++depth }
         depth == 1 && /^ *#else/ { kept = !kept; next }
         depth && /^ *#endif/ { if (--depth == 0) next }
         !depth || kept' | sed 's,//.*,,' | tr '\n' ' ' | sed 's/;/;\n/g; s/#include/\n#include/g'
}
faultsIn() {
    grep -oE '#include <Q[^>]*>' "$1" | grep -vE "<($headers)>" || true
    grep -oE "$later" "$1" || true
    grep -oE "$connections" "$1" || true
}

work="$(mktemp)"
trap 'rm -f "$work"' EXIT
status=0

# The net itself: each of these must be caught, the guarded ones must not.
while IFS= read -r line; do
    forQt4 <<<"$line" >"$work"
    [ -n "$(faultsIn "$work")" ] || { echo "not noticed: $line"; status=1; }
done <<'LINES'
#include <QJsonObject>
connect(a, &Slider::moved, b, &Page::show);
connect(a, SIGNAL(moved()), [] {});
return QStringLiteral("x");
QMetaType::Type type = QMetaType::UnknownType;
LINES
printf '#if QT_VERSION >= 0x050000\n#if A\nqAsConst\n#endif\n#else\nint i;\n#endif\n' | forQt4 >"$work"
[ -z "$(faultsIn "$work")" ] || { echo "guarded lines were read"; status=1; }

while IFS= read -r file; do
    forQt4 <"$file" >"$work"
    faults="$(faultsIn "$work")"
    [ -z "$faults" ] || { echo "$file: not in Qt 4.8: $faults"; status=1; }
done < <(find plugin framework filters -name '*.cpp' -o -name '*.h')
while IFS= read -r file; do
    faults="$(grep -oE '<(widget|layout|class)( class="|>)[A-Za-z0-9]+' "$file" | grep -vE "(\"|>)($widgets)$" || true)"
    [ -z "$faults" ] || { echo "$file: not a class of these forms: $faults"; status=1; }
done < <(find filters -name '*.ui')
exit $status
