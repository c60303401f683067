#include "Libs/Platform/ClassicLocale.h"

#include <locale.h>

namespace {

// Made once and kept: a thread that leaves late may still run under it.
locale_t ClassicLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t{});
  return locale;
}

}  // namespace

ClassicLocaleScope::ClassicLocaleScope() : fBefore(nullptr) {
  if (const locale_t classic = ClassicLocale()) fBefore = uselocale(classic);
}

ClassicLocaleScope::~ClassicLocaleScope() {
  if (fBefore) uselocale(static_cast<locale_t>(fBefore));
}
