#pragma once

/// Names of the runtime, declared only. A header that mentions a type in a signature includes this one.

namespace ling {

class Any;
class Boolean;
class Boxed_Generic;
class ByteArray;
class Class_Generic;
class Date;
class DateTime;
class Decimal;
class Error;
class Float;
class FunctionCL_Generic;
class I_Invokable_Generic;
class I_Iterable_Generic;
class I_Iterator_Generic;
class I_Map_Generic;
class I_Sequence_Generic;
class Integer;
class List_Generic;
class Map_Generic;
class Module;
class Parameter;
class Property;
class Set_Generic;
class Signature;
class String;
class Time;
class Tuple_Generic;
class Type;

class field_ident_untyped;
class method_ident_untyped;
class property_ident_untyped;

struct NamedArgument;

template <class T>
class Result;

namespace internal {
class object_value;
class object_value_class;
class short_way;
class object_value_function;
class object_value_object;
struct identifier_data;
}  // namespace internal

}  // namespace ling
