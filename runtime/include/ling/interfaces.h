#pragma once

#include "ling/any.h"
#include "ling/class.h"
#include "ling/result.h"

/// The small interfaces: what a value can say about itself.

namespace ling {

class I_MutableMap_Generic;

/// Values that never change: their hash and order go by content, and they may be keys.
class LING_EXPORT I_Immutable : public Any {
public:
    static Result<I_Immutable> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
};

/// Values that make sense in this process only and are never written out.
class LING_EXPORT I_RuntimeOnly : public Any {
public:
    static Result<I_RuntimeOnly> cast(const Any& value) { return internal::cast_handle<I_RuntimeOnly>(value); }
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
};

class LING_EXPORT I_HasDoc : public Any {
public:
    String doc() const;  ///< Empty when the property cannot be read as text.
    static Result<I_HasDoc> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
    static const property_ident_untyped $$doc;
};

class LING_EXPORT I_HasName : public Any {
public:
    String name() const;
    static Result<I_HasName> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
    static const property_ident_untyped $$name;
};

/// Functions that know the code they run, as their language represents it.
class LING_EXPORT I_HasCode : public Any {
public:
    Any code() const;
    static Result<I_HasCode> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
    static const property_ident_untyped $$code;
};

/// Values that can turn themselves into instances of other classes.
class LING_EXPORT I_Convertible : public Any {
public:
    /// The value as an instance of `target`, or an error result when there is no such conversion.
    Any tryInto(const Class_Generic& target) const;
    static Result<I_Convertible> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
    static const method_ident_untyped $tryInto;
};

/// What a language plug-in offers the runtime and the other languages. The members are class-level: the class itself
/// answers them, and so does the one object that `$$instance` gives.
class LING_EXPORT I_Language : public Any {
public:
    /// Runs a block of statements with `variables` bound by name, and answers what it returns, or none. The block may
    /// assign to them: their values then stand in `variables`, which is how a scope lasts from one block to the next.
    Any evaluate(const String& code, const Map_Generic& variables) const;
    Any evaluate(const String& code) const;
    /// Runs one expression and answers its value.
    Any evaluateExpression(const String& code, const I_Map_Generic& variables) const;
    Any evaluateExpression(const String& code) const;

    /// Control over a guest, where the language offers it: an error result where it does not. Any thread may call
    /// these, and none needs a lock of the language.
    ///
    /// Ends the evaluations that are running, on whatever thread: each answers an error that says so. Answers how many
    /// those are, without waiting for their ends. Those that begin later are not touched.
    Any interrupt() const;
    /// `evaluate` with a time limit: once it has passed, the code is ended, and the answer is an error that says so.
    Any evaluateWithin(double seconds, const String& code, const Map_Generic& variables) const;
    Any evaluateWithin(double seconds, const String& code) const;
    /// Calls a function, of whatever it may run, with a time limit for the code of the language in it.
    Any callWithin(double seconds, const I_Invokable_Generic& function, const List_Generic& arguments) const;

    /// A new scope: names that last, with the host's modules among them, as a map that is read and written live.
    Result<I_MutableMap_Generic> makeScope() const;
    /// Runs statements whose names are those of `scope`: what they assign, define and import stays there. None, or an
    /// error result.
    Any evaluateIn(const I_MutableMap_Generic& scope, const String& code) const;
    /// The value of one expression in `scope`.
    Any evaluateExpressionIn(const I_MutableMap_Generic& scope, const String& code) const;

    /// Has all text that the language's programs print given to `output(text, stream)`, where `stream` is "stdout" or
    /// "stderr", on the thread that prints. None in the place of a function ends that. None, or an error result.
    Any takeOutput(const Any& output) const;
    /// What a program of the language does at its end: waits for its threads, runs its exit functions, writes out what
    /// was printed. The last call before the process ends. None, or an error result: something could not be written.
    Any finish() const;

    static Result<I_Language> cast(const Any& value);
    static const Class_Generic& getClass();
    static Type getType() { return Type(getClass()); }
    static const method_ident_untyped $evaluate, $evaluateExpression, $evaluateMethod;
    static const method_ident_untyped $toCode, $typeName, $fromNativeClass, $toNativeClass;
    static const method_ident_untyped $interrupt, $evaluateWithin, $callWithin, $makeScope, $evaluateIn;
    static const method_ident_untyped $evaluateExpressionIn, $takeOutput, $finish;
    static const property_ident_untyped $$canEvaluate, $$instance;
};

/// The language of a name: "Python". A plug-in puts its class into the module "ling." with the name in small letters
/// and calls it "Language" with the name. An error result when no such plug-in is in use.
LING_EXPORT Result<I_Language> find_language(const String& name);

}  // namespace ling
