#include "host/CustomerPolicyCheck.h"

#include "host/ImportedFunctionBridge.h"

namespace Tovrin {
namespace {

struct InCustomerControlledPolicy {
  using Result = bool;
  static constexpr ImportedFunctionNames kNames{"QRX.InCustomerControlledPolicy",
                                                "QRX_GetInCustomerPolicy", "BOOLEAN", ""};
};

}  // namespace

bool CustomerPolicyCheck(IContext* context) {
  return ImportedFunctionBridge<InCustomerControlledPolicy>::Call(context);
}

}  // namespace Tovrin
