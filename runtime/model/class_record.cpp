#include "ling/class_record.h"

#include "ling/error.h"
#include "ling/list.h"
#include "ling/members.h"
#include "ling/property.h"
#include "model/argument_frame.h"
#include "model/borrowed_frame.h"
#include "model/class_tables.h"
#include "model/define.h"
#include "values/content_hash.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>

namespace ling::internal {

std::mutex& class_structure_guard() noexcept {
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

namespace {

/// An object with its fields in one piece of memory.
class plain_object final : public object_value_object {
public:
    static plain_object* make(object_value_class* klass) {
        const std::size_t count = klass->fieldCount();
        void* memory = ::operator new(sizeof(plain_object) + count * sizeof(Any));
        return new (memory) plain_object(klass, static_cast<std::uint32_t>(count));
    }
    /// Of the whole, whose size the language does not know.
    static void operator delete(void* memory) noexcept { ::operator delete(memory); }

private:
    static void* operator new(std::size_t, void* memory) noexcept { return memory; }

    plain_object(object_value_class* klass, std::uint32_t count) noexcept
        : object_value_object(klass, reinterpret_cast<Any*>(this + 1), count) {}
};

object_value* allocateObject(object_value_class* klass) { return plain_object::make(klass); }

constexpr const char16_t* kNativeValues =
    u"The values of the class '{}' are native ones: they have no fields and no finaliser.";

}  // namespace

/// What is done under the lock of the class structure. Changing a class is rare, and a change of one class reaches its
/// descendants and reads its ancestors, so one lock for all of them is the simple order.
struct class_structure {
    static std::mutex& guard() noexcept { return class_structure_guard(); }

    static const class_tables& tablesLocked(const object_value_class* klass) {
        const class_tables* tables = klass->outline_.load(std::memory_order_acquire);
        if (tables == nullptr)
            tables = buildLocked(klass);
        if (klass->tables_.load(std::memory_order_relaxed) == nullptr && hasAllMembers(*tables))
            klass->tables_.store(tables, std::memory_order_release);
        return *tables;
    }

    static const class_tables* buildLocked(const object_value_class* klass) {
        std::unique_ptr<class_tables> built = build_tables(const_cast<object_value_class*>(klass), &tablesLocked);
        const class_tables* tables = built.get();
        klass->declarations_->tables.push_back(std::move(built));
        klass->outline_.store(tables, std::memory_order_release);
        return tables;
    }

    static bool hasAllMembers(const class_tables& tables) {
        return std::none_of(tables.ancestry.begin(), tables.ancestry.end(),
                            [](const object_value_class* ancestor) { return ancestor->expectsMembers(); });
    }

    static void invalidate(object_value_class* klass) {
        klass->tables_.store(nullptr, std::memory_order_release);
        if (klass->outline_.exchange(nullptr, std::memory_order_acq_rel) == nullptr)
            return;  // Without tables of its own it cannot have children that have any.
        for (object_value_class* child : klass->declarations_->children)
            invalidate(child);
    }

    /// Changes the declarations of a class; `change` answers what it replaced, to be dropped outside the lock.
    template <class Change>
    static void change(object_value_class* klass, Change&& change) {
        [[maybe_unused]] std::optional<std::invoke_result_t<Change&, class_declarations&>> replaced;
        std::lock_guard hold(guard());
        replaced.emplace(change(*klass->declarations_));
        invalidate(klass);
    }

    /// The same where `refuses`, asked under the same lock, lets it. Answers whether it did.
    template <class Refuses, class Change>
    static bool changeUnless(object_value_class* klass, Refuses&& refuses, Change&& change) {
        std::lock_guard hold(guard());
        if (refuses())
            return false;
        change(*klass->declarations_);
        invalidate(klass);
        return true;
    }

    static bool isAncestorLocked(const object_value_class* ancestor, const object_value_class* klass) {
        const std::vector<object_value_class*>& all = tablesLocked(klass).ancestry;
        return std::find(all.begin(), all.end(), ancestor) != all.end();
    }

    /// Fields and a finaliser belong to objects: what a class of other values declared would be nowhere.
    /// Told from the class and the tables of its parents: one that is being built has none of its own yet.
    static bool hasNativeValues(const object_value_class* klass) {
        const class_declarations& own = klass->declarations();
        return own.hooks.nativeValues || std::any_of(own.parents.begin(), own.parents.end(), [](const auto& parent) {
                   return tablesLocked(parent.record()).hooks.nativeValues;
               });
    }
    static bool needsObjects(const object_value_class* klass) {
        const class_declarations& own = klass->declarations();
        return !own.fields.empty() || own.hooks.finalize != nullptr ||
               std::any_of(own.parents.begin(), own.parents.end(), [](const auto& parent) {
                   const class_tables& tables = tablesLocked(parent.record());
                   return !tables.fields.empty() || tables.hooks.finalize != nullptr;
               });
    }

    /// The class whose hook makes the instances of `klass`, as far as they are objects with native data of their own:
    /// handles read those by their class. Null for plain objects and for values that are told by their kind.
    static const object_value_class* makerOf(const object_value_class* klass) {
        const auto makes = [](const object_value_class* candidate) {
            const class_hooks& hooks = candidate->declarations().hooks;
            return hooks.allocate != nullptr && hooks.allocate != &allocateObject &&
                   hooks.allocate != &refuse_allocation && !hooks.nativeValues;
        };
        if (makes(klass))
            return klass;
        for (const Class_Generic& parent : klass->declarations().parents) {
            const std::vector<object_value_class*>& all = tablesLocked(parent.record()).ancestry;
            if (auto maker = std::find_if(all.begin(), all.end(), makes); maker != all.end())
                return *maker;
        }
        return nullptr;
    }

    /// Why `above` cannot be a parent of `klass`: a text with the name of the class in it, or null.
    static const char16_t* parentProblem(const object_value_class* klass, const object_value_class* above) {
        if (above == klass || isAncestorLocked(klass, above))
            return u"A class cannot be its own ancestor: '{}'.";
        if ((hasNativeValues(klass) && needsObjects(above)) || (hasNativeValues(above) && needsObjects(klass)))
            return kNativeValues;
        const object_value_class* maker = makerOf(klass);
        const object_value_class* other = makerOf(above);
        const bool agree =
            maker == nullptr || other == nullptr || isAncestorLocked(maker, other) || isAncestorLocked(other, maker);
        return agree ? nullptr : u"The instances of the class '{}' would be of two makes.";
    }

    /// The same for what no table shows.
    template <class Change>
    static void note(object_value_class* klass, Change&& change) {
        [[maybe_unused]] Any replaced;
        std::lock_guard hold(guard());
        replaced = change(*klass->declarations_);
    }

    /// Declares one member. Tables in use take it in where they stand: a class that grows while it is used would leave
    /// one set of tables behind for each member otherwise.
    template <class Identifier>
    static void declare(object_value_class* klass, declared_members<Identifier> class_declarations::*list,
                        const Identifier& id, object_value_class* definer, const Any& member) {
        [[maybe_unused]] Any replaced;
        std::lock_guard hold(guard());
        replaced = (klass->declarations_.get()->*list).put(id, definer, member);
        static std::uint64_t changes = 0;
        follow(klass, id, ++changes);
    }

    static void forgetChild(object_value_class* parent, object_value_class* child) {
        parent->declarations_->children.erase(child);
    }

    /// A class may be reached through several parents: it follows each change once.
    static void follow(object_value_class* klass, const identifier& id, std::uint64_t change) {
        class_declarations& own = *klass->declarations_;
        if (klass->outline_.load(std::memory_order_relaxed) == nullptr || own.lastChange == change)
            return;
        own.lastChange = change;
        if (!updated(*own.tables.back(), id)) {
            invalidate(klass);
            return;
        }
        for (object_value_class* child : own.children)
            follow(child, id, change);
    }

    /// Memory that ends is no reason to fail: what cannot be changed in its place is built anew when somebody looks.
    static bool updated(class_tables& tables, const identifier& id) noexcept {
        try {
            return update_tables(tables, id);
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    /// Whether `isWanted` answers true for a class or one it derives from, the class first. Gets no memory.
    template <class IsWanted>
    static bool search(const object_value_class* klass, IsWanted&& isWanted) {
        return isWanted(*klass) || std::ranges::any_of(klass->declarations_->parents, [&](const Class_Generic& parent) {
                   return search(parent.record(), isWanted);
               });
    }
};

namespace {

Any nativeValuesError(const String& name) { return failure(String(kNativeValues).arg(name)); }

Any madeByTheRuntime(const Class_Generic& cls) {
    return failure(String(u"Instances of the class '{}' are made by the runtime alone.").arg(qualname(cls)));
}

}  // namespace

object_value* refuse_allocation(object_value_class* klass) {
    return madeByTheRuntime(Class_Generic::share(klass)).take();
}
Any refuse_construction(const Class_Generic& cls, std::span<const Any>) { return madeByTheRuntime(cls); }

object_value_class::object_value_class(const String& name)
    : object_value(Kind::Object), name_(name), declarations_(std::make_unique<class_declarations>()) {}

object_value_class::~object_value_class() {
    std::lock_guard hold(class_structure::guard());
    for (const Class_Generic& parent : declarations_->parents)
        class_structure::forgetChild(parent.record(), this);
}

const class_tables& object_value_class::tables() const {
    const class_tables* present = outline_.load(std::memory_order_acquire);
    return present != nullptr ? *present : buildTables();
}

const class_tables& object_value_class::buildTables() const {
    std::lock_guard hold(class_structure::guard());
    return class_structure::tablesLocked(this);
}

const member_tables& object_value_class::ensureTables() const {
    for (const object_value_class* ancestor : tables().ancestry)
        (void)ancestor->ensureMembers();
    return buildTables();
}

bool object_value_class::ensureMembers() const {
    if (!expectsMembers())
        return true;
    if (!const_cast<object_value_class*>(this)->declareMembers())
        return false;
    expectsMembers_.store(false, std::memory_order_release);
    return true;
}

std::span<object_value_class* const> object_value_class::ancestry() const { return tables().ancestry; }

bool object_value_class::isAncestor(const object_value_class* ancestor) const noexcept {
    if (ancestor == this)
        return true;
    if (const class_tables* present = outline_.load(std::memory_order_acquire))
        return present->ancestors.has(ancestor);
    try {
        return tables().ancestors.has(ancestor);
    } catch (const std::bad_alloc&) {
        std::lock_guard hold(class_structure::guard());
        return class_structure::search(this, [&](const object_value_class& klass) { return &klass == ancestor; });
    }
}

void (*object_value_class::finaliser() const noexcept)(object_value_object&) {
    try {
        return hooks().finalize;
    } catch (const std::bad_alloc&) {
        void (*found)(object_value_object&) = nullptr;
        std::lock_guard hold(class_structure::guard());
        class_structure::search(this, [&](const object_value_class& klass) {
            return (found = klass.declarations_->hooks.finalize) != nullptr;
        });
        return found;
    }
}

const class_hooks& object_value_class::hooks() const { return tables().hooks; }
bool object_value_class::isInterface() const { return tables().isInterface; }
const Class_Generic& object_value_class::generic() const { return tables().generic; }
const std::vector<Type>& object_value_class::parameters() const { return tables().parameters; }

const found_member& object_value_class::methodProtocol() const { return tables().methodProtocol; }
const found_member& object_value_class::propertyProtocol() const { return tables().propertyProtocol; }
const offered_ways& object_value_class::offered() const { return tables().offered; }

std::int64_t object_value_class::findField(const field_ident_untyped& id) const {
    const std::vector<declared_field>& fields = tables().fields;
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (fields[i].id == id)
            return static_cast<std::int64_t>(i);
    return -1;
}

const Field* object_value_class::fieldAt(std::size_t position) const {
    const std::vector<declared_field>& fields = tables().fields;
    return position < fields.size() ? &fields[position].field : nullptr;
}

field_ident_untyped object_value_class::fieldIdentifier(std::size_t position) const {
    return tables().fields[position].id;
}

std::size_t object_value_class::fieldCount() const { return tables().fields.size(); }

Any object_value_class::add_parent_unsafe(const Class_Generic& parent) {
    object_value_class* const above = parent.record();
    const char16_t* problem = nullptr;
    const auto refuses = [&] { return (problem = class_structure::parentProblem(this, above)) != nullptr; };
    class_structure::changeUnless(this, refuses, [&](class_declarations& own) {
        if (std::find(own.parents.begin(), own.parents.end(), parent) == own.parents.end()) {
            own.parents.reserve(own.parents.size() + 1);  // Each knows the other, or neither.
            above->declarations_->children.insert(this);
            own.parents.push_back(parent);
        }
    });
    return problem == nullptr ? Any() : failure(String(problem).arg(name_));
}

Any object_value_class::add_field_unsafe(const field_ident_untyped& id, const Type& type, const String& doc) {
    const bool done = class_structure::changeUnless(
        this, [this] { return class_structure::hasNativeValues(this); },
        [&](class_declarations& own) {
            own.fields.push_back({id, {type, doc}});
        });
    return done ? Any() : nativeValuesError(name_);
}

void object_value_class::add_method_unsafe(const method_ident_untyped& id, object_value_class* definer,
                                           const I_Invokable_Generic& method) {
    class_structure::declare(this, &class_declarations::methods, id, definer, method);
}

void object_value_class::add_property_unsafe(const property_ident_untyped& id, object_value_class* definer,
                                             const Property& property) {
    class_structure::declare(this, &class_declarations::properties, id, definer, property);
}

void object_value_class::add_class_method_unsafe(const method_ident_untyped& id, object_value_class* definer,
                                                 const I_Invokable_Generic& method) {
    class_structure::declare(this, &class_declarations::classMethods, id, definer, method);
}

void object_value_class::add_class_property_unsafe(const property_ident_untyped& id, object_value_class* definer,
                                                   const Property& property) {
    class_structure::declare(this, &class_declarations::classProperties, id, definer, property);
}

void object_value_class::set_doc_unsafe(const String& doc) {
    class_structure::note(this, [&](class_declarations& own) { return std::exchange(own.doc, doc); });
}

void object_value_class::set_example_unsafe(Language language, const String& example) {
    class_structure::note(this, [&](class_declarations& own) {
        return std::exchange(own.examples[static_cast<std::size_t>(language)], example);
    });
}

void object_value_class::set_module_unsafe(const Module& module) {
    class_structure::note(this, [&](class_declarations& own) { return std::exchange(own.module, module); });
}

void object_value_class::set_interface_unsafe() {
    class_structure::change(this, [](class_declarations& own) {
        own.isInterface = true;
        return Any();
    });
}

Any object_value_class::set_hooks_unsafe(const class_hooks& hooks) {
    const auto refuses = [&] { return hooks.finalize != nullptr && class_structure::hasNativeValues(this); };
    const bool done = class_structure::changeUnless(this, refuses, [&](class_declarations& own) {
        if (hooks.allocate != nullptr)
            own.hooks.allocate = hooks.allocate;
        if (hooks.construct != nullptr)
            own.hooks.construct = hooks.construct;
        if (hooks.invoke != nullptr)
            own.hooks.invoke = hooks.invoke;
        if (hooks.invokeNamed != nullptr)
            own.hooks.invokeNamed = hooks.invokeNamed;
        if (hooks.finalize != nullptr)
            own.hooks.finalize = hooks.finalize;
        own.hooks.nativeValues = own.hooks.nativeValues || hooks.nativeValues;
    });
    return done ? Any() : nativeValuesError(name_);
}

void object_value_class::set_generic_unsafe(const Class_Generic& generic, std::vector<Type> parameters) {
    class_structure::change(this, [&](class_declarations& own) {
        return std::pair(std::exchange(own.parameters, std::move(parameters)), std::exchange(own.generic, generic));
    });
}

void object_value_class::set_generic_parents_unsafe(void (*addParents)(object_value_class*, std::span<const Type>)) {
    class_structure::note(this, [&](class_declarations& own) {
        own.addGenericParents = addParents;
        return Any();
    });
}

namespace {

std::size_t hashOf(std::span<const Type> parameters) noexcept {
    std::uint64_t hash = parameters.size();
    for (const Type& parameter : parameters)
        hash = content_hash::mix(hash ^ parameter.hash(), content_hash::kFirst);
    return hash;
}

Class_Generic findInstance(const class_declarations& generic, std::span<const Type> parameters) {
    const auto [first, end] = generic.instances.equal_range(hashOf(parameters));
    for (auto instance = first; instance != end; ++instance)
        if (std::ranges::equal(instance->second.record()->declarations().parameters, parameters))
            return instance->second;
    return Class_Generic();
}

String instanceName(const String& generic, std::span<const Type> parameters) {
    string_builder name;
    name.append(generic).append("<");
    for (std::size_t i = 0; i < parameters.size(); ++i)
        name.append(i == 0 ? "" : ", ").append(parameters[i].toString());
    return name.append(">").build();
}

}  // namespace

Class_Generic object_value_class::genericInstance(std::span<const Type> parameters) {
    const Class_Generic generic = Class_Generic::share(this);
    auto present = [&] {
        std::lock_guard hold(class_structure::guard());
        return findInstance(*declarations_, parameters);
    }();
    if (!present.isNone())
        return present;

    auto* made = new object_value_class(instanceName(name_, parameters));
    const Class_Generic instance = Class_Generic::adopt(made);
    made->add_parent_unsafe(generic);
    made->set_generic_unsafe(generic, {parameters.begin(), parameters.end()});
    if (auto addParents = read_declarations(*this, [](const class_declarations& own) { return own.addGenericParents; }))
        addParents(made, parameters);
    made->set_doc_unsafe(read_declarations(*this, [](const class_declarations& own) { return own.doc; }));
    made->set_module_unsafe(generic.parentModule());
    if (isInterface())
        made->set_interface_unsafe();

    std::lock_guard hold(class_structure::guard());
    present = findInstance(*declarations_, parameters);  // Another thread may have been faster.
    if (!present.isNone())
        return present;
    declarations_->instances.emplace(hashOf(parameters), instance);
    return instance;
}

Any initialise(const Any& instance, const found_member& initialiser, std::span<const Any> arguments) {
    const object_value* object = instance.object();
    if (object == nullptr || object->ownClass() == nullptr || object->ownClass()->methodProtocol() ||
        object->findExtras() != nullptr)
        return instance.callMethod(Any::$__init__, arguments);
    return initialiser.classLevel ? initialiser.member->invoke(arguments)
                                  : initialiser.member->invoke(borrowed_frame(instance, arguments));
}

namespace {

bool takesNamesAlone(object_value& function) {
    const Result<Signature> signature = unchecked<I_Invokable_Generic>(Any::share(&function)).signature();
    return signature && std::ranges::any_of(signature->parameters(), [](const Parameter& parameter) {
               return parameter.mode() == ParameterMode::NameOnly || parameter.mode() == ParameterMode::VariadicNamed;
           });
}

}  // namespace

Any object_value_class::invoke(std::span<const Any> arguments) {
    return Class_Generic::share(this).construct(arguments);
}

/// Arguments are bound by the signature of the class, but for an initialiser with parameters that go by name alone: no
/// order of positions reaches those, so it binds them itself.
Any object_value_class::invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named) {
    const found_member initialiser = findMethod(Any::$__init__);
    if (hooks().construct != nullptr || !initialiser || !takesNamesAlone(*initialiser.member))
        return object_value::invokeNamed(positional, named);
    const Any kept = Any::share(initialiser.member);  // The class may be changed while its method runs.
    Any instance = Class_Generic::share(this).allocateInstance();
    if (is_error_result(instance))
        return instance;
    argument_frame frame(positional.size() + 1);
    frame.add(instance);
    frame.addAll(positional);
    Any outcome = kept.object()->invokeNamed(frame, named);
    return is_error_result(outcome) ? outcome : instance;
}

/// Fields that have grown out of the place they were in.
struct object_value_object::field_block {
    static field_block* make(std::size_t count) {
        return new (::operator new(sizeof(field_block) + count * sizeof(Any))) field_block;
    }
    Any* fields() noexcept { return reinterpret_cast<Any*>(this + 1); }

    field_block* before = nullptr;
};

object_value_object::object_value_object(object_value_class* klass, Any* fields, std::uint32_t count) noexcept
    : object_value(Kind::Object, klass), fields_(fields), fieldCount_(count) {
    std::uninitialized_default_construct_n(fields, count);
}

object_value_object::~object_value_object() {
    std::destroy_n(fields_.load(std::memory_order_relaxed), fieldCount_.load(std::memory_order_relaxed));
    while (blocks_ != nullptr)
        ::operator delete(std::exchange(blocks_, blocks_->before));
}

void object_value_object::aboutToDie() noexcept {
    const auto finalize = ownClass()->finaliser();
    if (finalize == nullptr)
        return;
    const Any outcome = contain([&] { return finalize(*this), Any(); });
    if (is_error_result(outcome))  // Nobody waits for it.
        (void)contain([&] {
            assertion_log(String(u"The finaliser of the class '{}' failed: {}")
                              .arg(ownClass()->name(), unchecked<Error>(outcome).message()));
            return Any();
        });
}

/// False where the guard is needed: for an object, which has to be counted, while a field is written, and for a field
/// that is not there. Each load is ordered before the next one, so that what was written between the first and the last
/// shows in the last.
bool object_value_object::readField(std::size_t position, Any& value) const noexcept {
    const std::uint64_t before = changes_.load(std::memory_order_acquire);
    if (before % 2 != 0 || position >= fieldCount_.load(std::memory_order_acquire))
        return false;
    Any& field = fields_.load(std::memory_order_acquire)[position];
    const Any::Tag tag = std::atomic_ref(field.tag_).load(std::memory_order_acquire);
    const std::uint64_t bits = std::atomic_ref(field.bits_).load(std::memory_order_acquire);
    if (tag == Any::Tag::Heap || changes_.load(std::memory_order_relaxed) != before)
        return false;
    value.tag_ = tag;
    value.bits_ = bits;
    return true;
}

Any object_value_object::field(std::size_t position) const {
    Any value;
    if (readField(position, value))
        return value;
    std::lock_guard hold(guard());
    return position < fieldCount_ ? fields_[position] : Any();
}

void object_value_object::setField(std::size_t position, Any value) {
    if (!storeField(position, value)) {
        makeRoom(ownClass()->fieldCount());
        (void)storeField(position, value);
    }
    // The old value dies with the parameter, after the guard.
}

bool object_value_object::storeField(std::size_t position, Any& value) {
    std::lock_guard hold(guard());
    if (position >= fieldCount_.load(std::memory_order_relaxed))
        return false;
    Any& field = fields_.load(std::memory_order_relaxed)[position];
    const change writing(*this);
    const Any::Tag tag = field.tag_;
    const std::uint64_t bits = field.bits_;
    std::atomic_ref(field.tag_).store(value.tag_, std::memory_order_release);
    std::atomic_ref(field.bits_).store(value.bits_, std::memory_order_release);
    value.tag_ = tag;
    value.bits_ = bits;
    return true;
}

/// Fields take room when the first of them is set, but where they are part of the object: many objects, proxies above
/// all, never use theirs. And the class may gain some after this instance was made.
void object_value_object::makeRoom(std::size_t count) {
    const auto discard = [](field_block* block) { ::operator delete(block); };
    std::unique_ptr<field_block, decltype(discard)> larger(field_block::make(count), discard);
    std::lock_guard hold(guard());
    const std::size_t present = fieldCount_.load(std::memory_order_relaxed);
    if (count <= present)
        return;  // Another thread was faster.
    const change writing(*this);
    if (present != 0)  // They move by their bytes.
        std::memcpy(static_cast<void*>(larger->fields()), fields_.load(std::memory_order_relaxed),
                    present * sizeof(Any));
    std::uninitialized_default_construct(larger->fields() + present, larger->fields() + count);
    fields_.store(larger->fields(), std::memory_order_release);
    fieldCount_.store(static_cast<std::uint32_t>(count), std::memory_order_release);
    larger->before = blocks_;
    blocks_ = larger.release();
}

Any object_value_object::invoke(std::span<const Any> arguments) {
    return contain([&] {
        const Any self = Any::share(this);
        if (auto invoke = ownClass()->hooks().invoke)
            return invoke(self, arguments);
        if (!ownClass()->findMethod(I_Invokable_Generic::$invoke))
            return object_value::invoke(arguments);
        const Any list = List_Generic(std::vector<Any>(arguments.begin(), arguments.end()));
        return self.callMethod(I_Invokable_Generic::$invoke, {list});
    });
}

Any object_value_object::invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named) {
    if (auto invokeNamed = ownClass()->hooks().invokeNamed)
        return invokeNamed(Any::share(this), positional, named);
    return object_value::invokeNamed(positional, named);
}

namespace {

/// The root gives every class plain objects as its instances, unless a class says otherwise.
Class_Generic makeRoot() {
    auto* root = new object_value_class(u"Any");
    root->set_hooks_unsafe({.allocate = &allocateObject});
    return Class_Generic::adopt(root);
}

}  // namespace

const Class_Generic& rootClass() {
    static const Class_Generic& root = *new Class_Generic(makeRoot());
    return root;
}

Class_Generic native_class(const char* name, std::initializer_list<Class_Generic> parents) {
    auto* made = new object_value_class(String(name));
    const Class_Generic cls = Class_Generic::adopt(made);
    for (const Class_Generic& parent : parents)
        made->add_parent_unsafe(parent);
    if (parents.size() == 0)
        made->add_parent_unsafe(rootClass());
    if (std::string_view(name).starts_with("I_"))
        made->set_interface_unsafe();
    made->pin();
    return cls;
}

Class_Generic runtime_made_class(const char* name, std::initializer_list<Class_Generic> parents) {
    const Class_Generic cls = native_class(name, parents);
    cls.record()->set_hooks_unsafe({.allocate = &refuse_allocation, .construct = &refuse_construction});
    return cls;
}

}  // namespace ling::internal
