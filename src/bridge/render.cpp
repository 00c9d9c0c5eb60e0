#include "bridge/render.h"

#include "bridge/convert.h"
#include "host/entry.h"
#include "host/platform.h"
#include "host/py_ref.h"
#include "host/stack_room.h"
#include "host/text_round.h"
#include "ling/basic_values.h"
#include "ling/byte_array.h"
#include "ling/comparison.h"
#include "ling/indirect_values.h"
#include "proxies/python_proxy.h"

#include <array>
#include <optional>

namespace ling::python {

namespace {

/// One rendering: the text so far.
class Renderer {
public:
    /// None, or the error that ends the rendering.
    ling::Any render(const ling::Any& value);
    ling::String text() const { return text_.build(); }

private:
    using Step = ling::Any (Renderer::*)(const ling::Any&);
    struct Brackets {
        const char* open;
        const char* close;
    };
    static const std::array<Step, 16> kSteps;
    static constexpr Brackets kList = {"[", "]"};
    static constexpr Brackets kMap = {"{", "}"};
    static constexpr Brackets kSet = {"Set([", "])"};
    static constexpr Brackets kTuple = {"(", ")"};
    static constexpr Brackets kSingle = {"(", ",)"};

    ling::Any renderBoolean(const ling::Any& value) { return put(value.asBoolean() ? "True" : "False"); }
    ling::Any renderByteArray(const ling::Any& value);
    ling::Any renderFloat(const ling::Any& value) { return put(ling::Float(value.asFloat()).toString()); }
    ling::Any renderFunction(const ling::Any& value);
    ling::Any renderMap(const ling::Any& value);
    ling::Any renderSet(const ling::Any& value);
    ling::Any renderInteger(const ling::Any& value) { return put(ling::display(value)); }
    ling::Any renderList(const ling::Any& value);
    ling::Any renderObject(const ling::Any& value);
    ling::Any renderString(const ling::Any& value);
    ling::Any renderTuple(const ling::Any& value);
    ling::Any renderBoxed(const ling::Any&) { return platform::failure(u"Boxed object."); }
    ling::Any renderExternal(const ling::Any&) { return platform::failure(u"External object."); }
    ling::Any renderLazy(const ling::Any& value);
    ling::Any renderWeak(const ling::Any& value) { return render(value.object()->lock()); }
    ling::Any renderUndefined(const ling::Any&) { return put("None"); }

    ling::Any renderClass(const ling::Class_Generic& cls);
    /// The items with ", " between them, each written by `renderItem`; "..." inside of the very same container.
    template <class Items, class RenderItem>
    ling::Any renderItems(const ling::Any& container, Brackets brackets, const Items& items, RenderItem&& renderItem);
    ling::Any renderAll(const ling::Any& container, Brackets brackets, std::span<const ling::Any> items);

    template <class Text>
    ling::Any put(const Text& text) {
        text_.append(text);
        return {};
    }

    platform::InterruptionPoll mustStop_;
    const platform::WalkCheck walks_;
    ling::string_builder text_;
};

/// By kind, in the order of their numbers.
const std::array<Renderer::Step, 16> Renderer::kSteps = {
    &Renderer::renderBoolean,  &Renderer::renderByteArray, &Renderer::renderFloat,   &Renderer::renderFunction,
    &Renderer::renderMap,      &Renderer::renderSet,       &Renderer::renderInteger, &Renderer::renderList,
    &Renderer::renderObject,   &Renderer::renderString,    &Renderer::renderTuple,   &Renderer::renderBoxed,
    &Renderer::renderExternal, &Renderer::renderLazy,      &Renderer::renderWeak,    &Renderer::renderUndefined,
};

/// What Python itself shows for the object behind a proxy. No value when it holds none, or cannot show it as text.
std::optional<ling::String> pythonText(const ling::Any& proxy) {
    PyObject* object = PythonProxy::pythonObject(proxy);
    if (object == nullptr)
        return std::nullopt;
    const PythonEntry entry;
    const TextRound round;
    PyRef shown = PyRef::steal(isInterruptionHeld() ? nullptr : PyObject_Repr(object));
    const ling::Result<ling::String> text = ling::String::cast(shown ? toLing(shown.get()) : ling::Any());
    const bool isShown = text && PyErr_Occurred() == nullptr;
    if (!shown && PyErr_Occurred() != nullptr && PyErr_ExceptionMatches(PyExc_RecursionError) != 0)
        round.noteRecursion();
    forgetError();
    return isShown ? std::optional(*text) : std::nullopt;
}

bool isReachable(const ling::Class_Generic& cls) {
    const ling::Module module = cls.parentModule();
    return !module.isNone() && !ling::property_of(module, platform::LookupName(cls.name()).property()).isNone();
}

ling::Any Renderer::render(const ling::Any& value) {
    if (value.isNone())
        return put("None");
    if (!hasStackRoom())
        platform::WalkCheck::noteTooDeep();
    else if (mustStop_())
        platform::WalkCheck::noteInterrupted();
    ling::Any problem = walks_.problem();
    if (!problem.isNone())
        return problem;
    problem = (this->*kSteps[static_cast<std::size_t>(value.kind())])(value);
    return problem.isNone() ? walks_.problem() : problem;
}

ling::Any Renderer::renderByteArray(const ling::Any& value) {
    text_.append("b'").append(ling::unchecked<ling::ByteArray>(value).toString()).append("'");
    return {};
}

ling::Any Renderer::renderFunction(const ling::Any& value) {
    const auto& function = *static_cast<const ling::internal::object_value_function*>(value.object());
    return put(ling::String(u"Function: '{}'.").arg(function.name()));
}

template <class Items, class RenderItem>
ling::Any Renderer::renderItems(const ling::Any& container, Brackets brackets, const Items& items,
                                RenderItem&& renderItem) {
    const platform::ShownScope shown(container.object());
    text_.append(brackets.open);
    if (!shown.isNew())
        text_.append("...");
    for (std::size_t i = 0; shown.isNew() && i < items.size(); ++i) {
        if (i > 0)
            text_.append(", ");
        if (ling::Any problem = renderItem(items[i]); !problem.isNone())
            return problem;
    }
    return put(brackets.close);
}

ling::Any Renderer::renderAll(const ling::Any& container, Brackets brackets, std::span<const ling::Any> items) {
    return renderItems(container, brackets, items, [this](const ling::Any& item) { return render(item); });
}

ling::Any Renderer::renderMap(const ling::Any& value) {
    const auto& map = *static_cast<const ling::internal::object_value_hash_map*>(value.object());
    return renderItems(value, kMap, map.copy_and_load_pairs(), [this](const auto& pair) {
        ling::Any problem = render(pair.first);
        if (problem.isNone()) {
            text_.append(": ");
            problem = render(pair.second);
        }
        return problem;
    });
}

ling::Any Renderer::renderSet(const ling::Any& value) {
    const auto& set = *static_cast<const ling::internal::object_value_hash_set*>(value.object());
    return renderAll(value, kSet, set.copy_items());
}

ling::Any Renderer::renderList(const ling::Any& value) {
    return renderAll(value, kList, platform::itemsOf(ling::unchecked<ling::List_Generic>(value)));
}

/// A comma after a single item makes it a tuple, here as in any Python source.
ling::Any Renderer::renderTuple(const ling::Any& value) {
    const std::span<const ling::Any> items =
        static_cast<const ling::internal::object_value_tuple*>(value.object())->items();
    return renderAll(value, items.size() == 1 ? kSingle : kTuple, items);
}

ling::Any Renderer::renderString(const ling::Any& value) {
    text_.append("'").append(ling::unchecked<ling::String>(value).replaced(u"'", u"''")).append("'");
    return {};
}

ling::Any Renderer::renderLazy(const ling::Any& value) {
    const ling::Any result = static_cast<ling::internal::object_value_lazy*>(value.object())->evaluate();
    return ling::internal::is_error_result(result) ? result : render(result);
}

ling::Any Renderer::renderClass(const ling::Class_Generic& cls) {
    return isReachable(cls) ? put(ling::qualname(cls)) : platform::failure(u"Non-reachable class.");
}

/// A part of a longer string is an object, but shows as the string that it is.
ling::Any Renderer::renderObject(const ling::Any& value) {
    if (isPythonProxy(value)) {
        if (const std::optional<ling::String> text = pythonText(value))
            return put(*text);
    }
    if (value.object()->ownClass() == nullptr)
        return renderClass(ling::unchecked<ling::Class_Generic>(value));
    if (ling::internal::cast_object(value, ling::String::getClass()) != nullptr)
        return renderString(value);
    text_.append("{").append(ling::qualname(value)).append("}");
    return {};
}

}  // namespace

ling::Any renderPython(const ling::Any& value) {
    Renderer renderer;
    ling::Any problem = renderer.render(value);
    return problem.isNone() ? renderer.text() : problem;
}

}  // namespace ling::python
