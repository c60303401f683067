#pragma once

#include <string_view>

#include "host/AutoRefPtr.h"
#include "host/IContext.h"
#include "host/IVectorGeneric.h"

namespace Tovrin {

// Fills one of the host's VECTOR<STRING> values, piece by piece.
//
// Without a context, or with a host that gives no vector, it stays empty-handed: it takes pieces
// and keeps none. A piece for which the host gives no variant is left out. Used by one thread.
class StringVectorBuilder {
public:
  explicit StringVectorBuilder(IContext* context);

  // Copies the piece.
  void Append(std::string_view piece);
  // The vector, or an empty reference; ends the building.
  AutoRefPtr<const IVectorGeneric> Take() { return std::move(fVector); }

private:
  IContext* fContext;                        // borrowed for the length of the call
  AutoRefPtr<const IVectorGeneric> fVector;  // what the host's last append gave
};

}  // namespace Tovrin
