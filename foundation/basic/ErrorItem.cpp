#include "foundation/basic/ErrorItem.h"

namespace vellum {

ErrorItem const ERROR_TOO_OLD{EICF_TOO_OLD, EILF_TOO_OLD, 0, "Error not in list because too old"};

}  // namespace vellum
