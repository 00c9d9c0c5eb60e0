#include "ling/short_ways.h"

namespace ling::internal {

short_way::~short_way() = default;

}  // namespace ling::internal
