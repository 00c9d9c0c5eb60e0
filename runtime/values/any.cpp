#include "ling/any.h"

namespace ling {

const method_ident_untyped Any::$__add__{"__add__"};
const method_ident_untyped Any::$__sub__{"__sub__"};
const method_ident_untyped Any::$__mul__{"__mul__"};
const method_ident_untyped Any::$__div__{"__div__"};
const method_ident_untyped Any::$__iadd__{"__iadd__"};
const method_ident_untyped Any::$__isub__{"__isub__"};
const method_ident_untyped Any::$__imul__{"__imul__"};
const method_ident_untyped Any::$__idiv__{"__idiv__"};
const method_ident_untyped Any::$__display__{"__display__"};
const method_ident_untyped Any::$__compare__{"__compare__"};
const method_ident_untyped Any::$__hash__{"__hash__"};
const method_ident_untyped Any::$__init__{"__init__"};
const method_ident_untyped Any::$__method__{"__method__"};
const method_ident_untyped Any::$__property__{"__property__"};
const method_ident_untyped Any::$__ownMethod__{"__ownMethod__"};
const method_ident_untyped Any::$__ownProperty__{"__ownProperty__"};
const method_ident_untyped Any::$__ownMethods__{"__ownMethods__"};
const method_ident_untyped Any::$__ownProperties__{"__ownProperties__"};
const method_ident_untyped Any::$__insertMethod__{"__insertMethod__"};
const method_ident_untyped Any::$__insertProperty__{"__insertProperty__"};
const method_ident_untyped Any::$__removeMethod__{"__removeMethod__"};
const method_ident_untyped Any::$__removeProperty__{"__removeProperty__"};

}  // namespace ling
