#pragma once

#include "host/names.h"

/// The Python methods and attributes that proxies use.
namespace ling::python::names {

inline constinit const Name add{"add"};
inline constinit const Name append{"append"};
inline constinit const Name bases{"__bases__"};
inline constinit const Name clear{"clear"};
inline constinit const Name count{"count"};
inline constinit const Name dunderContains{"__contains__"};
inline constinit const Name dunderDelitem{"__delitem__"};
inline constinit const Name dunderGetitem{"__getitem__"};
inline constinit const Name dunderIter{"__iter__"};
inline constinit const Name dunderLen{"__len__"};
inline constinit const Name dunderSetitem{"__setitem__"};
inline constinit const Name dunderStr{"__str__"};
inline constinit const Name extend{"extend"};
inline constinit const Name fget{"fget"};
inline constinit const Name fset{"fset"};
inline constinit const Name index{"index"};
inline constinit const Name insert{"insert"};
inline constinit const Name keys{"keys"};
inline constinit const Name module{"__module__"};
inline constinit const Name notes{"__notes__"};
inline constinit const Name pop{"pop"};
inline constinit const Name remove{"remove"};
inline constinit const Name values{"values"};

}  // namespace ling::python::names
