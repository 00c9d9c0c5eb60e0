#include "ling/interfaces.h"

#include "interfaces/define.h"
#include "ling/class_builder.h"
#include "ling/class_record.h"
#include "ling/error.h"
#include "ling/hash_containers.h"
#include "ling/list.h"
#include "ling/map_interface.h"
#include "ling/module.h"
#include "ling/string.h"

namespace ling {

using internal::cast_handle;
using internal::native_class;

const property_ident_untyped I_HasDoc::$$doc{"doc"};
const property_ident_untyped I_HasName::$$name{"name"};
const property_ident_untyped I_HasCode::$$code{"code"};
const method_ident_untyped I_Convertible::$tryInto{"tryInto"};
const method_ident_untyped I_Language::$evaluate{"evaluate"};
const method_ident_untyped I_Language::$evaluateExpression{"evaluateExpression"};
const method_ident_untyped I_Language::$evaluateMethod{"evaluateMethod"};
const method_ident_untyped I_Language::$toCode{"toCode"};
const method_ident_untyped I_Language::$typeName{"typeName"};
const method_ident_untyped I_Language::$fromNativeClass{"fromNativeClass"};
const method_ident_untyped I_Language::$toNativeClass{"toNativeClass"};
const method_ident_untyped I_Language::$interrupt{"interrupt"};
const method_ident_untyped I_Language::$evaluateWithin{"evaluateWithin"};
const method_ident_untyped I_Language::$callWithin{"callWithin"};
const method_ident_untyped I_Language::$makeScope{"makeScope"};
const method_ident_untyped I_Language::$evaluateIn{"evaluateIn"};
const method_ident_untyped I_Language::$evaluateExpressionIn{"evaluateExpressionIn"};
const method_ident_untyped I_Language::$takeOutput{"takeOutput"};
const method_ident_untyped I_Language::$finish{"finish"};
const property_ident_untyped I_Language::$$canEvaluate{"canEvaluate"};
const property_ident_untyped I_Language::$$instance{"instance"};

namespace {

/// Empty for whatever cannot be read as text: these texts are for people, who are not helped by a second error.
String textOf(const Any& value, const property_ident_untyped& id) {
    return String::cast(internal::result_unwrap_lazy(value.propertyValue(id))).valueOr(String());
}

}  // namespace

Result<I_Immutable> I_Immutable::cast(const Any& value) {
    // Immediate values are instances of their classes too, so this asks the class and not the object.
    if (raw_class_record(value)->isAncestor(getClass().record()))
        return unchecked<I_Immutable>(value);
    return Result<I_Immutable>::failure(internal::cast_error(value, getClass()));
}

const Class_Generic& I_Immutable::getClass() {
    static const Class_Generic& cls = *new Class_Generic(native_class("I_Immutable", {}));
    return cls;
}

const Class_Generic& I_RuntimeOnly::getClass() {
    static const Class_Generic& cls = *new Class_Generic(native_class("I_RuntimeOnly", {}));
    return cls;
}

String I_HasDoc::doc() const { return textOf(*this, $$doc); }
Result<I_HasDoc> I_HasDoc::cast(const Any& value) { return cast_handle<I_HasDoc>(value); }
const Class_Generic& I_HasDoc::getClass() {
    static const Class_Generic& cls = *new Class_Generic(native_class("I_HasDoc", {}));
    return cls;
}

String I_HasName::name() const { return textOf(*this, $$name); }
Result<I_HasName> I_HasName::cast(const Any& value) { return cast_handle<I_HasName>(value); }
const Class_Generic& I_HasName::getClass() {
    static const Class_Generic& cls = *new Class_Generic(native_class("I_HasName", {}));
    return cls;
}

Any I_HasCode::code() const { return internal::result_unwrap_lazy(propertyValue($$code)); }
Result<I_HasCode> I_HasCode::cast(const Any& value) { return cast_handle<I_HasCode>(value); }
const Class_Generic& I_HasCode::getClass() {
    static const Class_Generic& cls = *new Class_Generic(native_class("I_HasCode", {}));
    return cls;
}

Any I_Convertible::tryInto(const Class_Generic& target) const { return callMethod($tryInto, {target}); }
Result<I_Convertible> I_Convertible::cast(const Any& value) { return cast_handle<I_Convertible>(value); }
const Class_Generic& I_Convertible::getClass() {
    static const Class_Generic& cls = *new Class_Generic(native_class("I_Convertible", {}));
    return cls;
}

Any I_Language::evaluate(const String& code, const Map_Generic& variables) const {
    return callMethod($evaluate, {code, variables, Map_Generic(), variables});
}
Any I_Language::evaluate(const String& code) const { return callMethod($evaluate, {code}); }
Any I_Language::evaluateExpression(const String& code, const I_Map_Generic& variables) const {
    return callMethod($evaluateExpression, {code, variables});
}
Any I_Language::evaluateExpression(const String& code) const { return callMethod($evaluateExpression, {code}); }

Any I_Language::interrupt() const { return callMethod($interrupt); }
Any I_Language::evaluateWithin(double seconds, const String& code, const Map_Generic& variables) const {
    return callMethod($evaluateWithin, {seconds, code, variables, Map_Generic(), variables});
}
Any I_Language::evaluateWithin(double seconds, const String& code) const {
    return callMethod($evaluateWithin, {seconds, code});
}
Any I_Language::callWithin(double seconds, const I_Invokable_Generic& function, const List_Generic& arguments) const {
    return callMethod($callWithin, {seconds, function, arguments});
}

Result<I_MutableMap_Generic> I_Language::makeScope() const {
    return I_MutableMap_Generic::cast(callMethod($makeScope));
}
Any I_Language::evaluateIn(const I_MutableMap_Generic& scope, const String& code) const {
    return callMethod($evaluateIn, {scope, code});
}
Any I_Language::evaluateExpressionIn(const I_MutableMap_Generic& scope, const String& code) const {
    return callMethod($evaluateExpressionIn, {scope, code});
}

Any I_Language::takeOutput(const Any& output) const { return callMethod($takeOutput, {output}); }
Any I_Language::finish() const { return callMethod($finish); }

Result<I_Language> find_language(const String& name) {
    std::string module = name.toStdString();
    for (char& letter : module)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    const Class_Generic cls = find_class(String(u"ling.{}.Language{}").arg(module, name));
    if (cls.isNone())
        return Failure(internal::failure(String(u"There is no language '{}' here.").arg(name)));
    return I_Language::cast(cls.propertyValue(I_Language::$$instance));
}

Result<I_Language> I_Language::cast(const Any& value) { return cast_handle<I_Language>(value); }
const Class_Generic& I_Language::getClass() {
    static const Class_Generic& cls = *new Class_Generic(native_class("I_Language", {I_HasName::getClass()}));
    return cls;
}

namespace internal {

void define_small_interface_members() {
    const std::pair<Class_Generic, const char*> docs[] = {
        {I_Immutable::getClass(),
         "Values that never change: they compare and hash by what they hold, and may be keys."},
        {I_RuntimeOnly::getClass(), "Values that make sense in this process only and are never written out."},
        {I_HasDoc::getClass(), "Values with a documentation text. An implementation gives 'doc'."},
        {I_HasName::getClass(), "Values with a name. An implementation gives 'name'."},
        {I_HasCode::getClass(), "Functions that know the code they run. An implementation gives 'code'."},
        {I_Convertible::getClass(),
         "Values that can turn themselves into instances of other classes. An implementation gives 'tryInto'."},
        {I_Language::getClass(), "What a language offers the runtime and the other languages."},
    };
    for (const auto& [cls, doc] : docs)
        extend_class(cls).doc(doc).build();
}

}  // namespace internal

}  // namespace ling
