#pragma once

#include "ling/class.h"
#include "ling/member_table.h"
#include "ling/object_value.h"

#include <atomic>
#include <memory>
#include <string_view>
#include <vector>

namespace ling::internal {

struct class_declarations;
struct class_tables;

/// Native behaviour of a class. Each entry is inherited by derived classes until one of them gives its own. What one
/// throws becomes the error of the call; from `finalize`, a line in the assertion log.
struct class_hooks {
    /// Makes an instance without arguments, one reference, of the given class or of one derived from it.
    object_value* (*allocate)(object_value_class* klass) = nullptr;
    /// Makes an instance from arguments; the default allocates one and calls its `$__init__`.
    Any (*construct)(const Class_Generic& cls, std::span<const Any> arguments) = nullptr;
    /// Calls an instance by position, in place of its method `$invoke`.
    Any (*invoke)(const Any& self, std::span<const Any> arguments) = nullptr;
    /// Calls an instance by position and by name; the default binds the arguments by its signature.
    Any (*invokeNamed)(const Any& self, std::span<const Any> positional,
                       std::span<const NamedArgument> named) = nullptr;
    /// Runs when the last reference to an instance goes, while its fields are still whole, on that thread. No lock
    /// of the runtime is held.
    void (*finalize)(object_value_object& instance) = nullptr;
    /// Its instances, and those of all derived classes, are values of another make than `object_value_object`: they
    /// have no fields and no finaliser, and a class that would give them some is refused when it is built.
    bool nativeValues = false;
};

/// The hooks of a class whose instances the runtime alone makes: an error result that says so.
LING_EXPORT object_value* refuse_allocation(object_value_class* klass);
LING_EXPORT Any refuse_construction(const Class_Generic& cls, std::span<const Any> arguments);

/// The class itself, behind `Class_Generic`.
///
/// Look-ups read an immutable table that flattens the class and its ancestry: one probe, no lock. A change drops the
/// table of the class and of all that derive from it, and the next look-up builds it again; tables that were once in
/// use stay until the class dies, since a reader may still hold one.
///
/// The `..._unsafe` operations are for building a class: they may not run at the same time on one class.
///
/// A class may leave its members for later: it says so with `expect_members_unsafe` while it is made, and declares them
/// in `declareMembers` when somebody first looks for a member or lists them. Nobody sees the difference, but for the
/// time it takes.
class LING_EXPORT object_value_class : public object_value {
public:
    explicit object_value_class(const String& name);

    const String& name() const noexcept { return name_; }
    std::span<object_value_class* const> ancestry() const;
    bool isAncestor(const object_value_class* ancestor) const noexcept;
    const class_hooks& hooks() const;  ///< With what is inherited.
    /// Stands for the ancestry, the hooks, the fields and the member protocol of the class as they are: changes with
    /// them, and is never the same again. Null while nobody has asked for them.
    const void* shape() const noexcept { return outline_.load(std::memory_order_acquire); }
    /// The hook `finalize`, or null. It is found without any memory too, since instances die then as well.
    void (*finaliser() const noexcept)(object_value_object&);

    /// Instance level: what a value of this class answers, class-level members of the class included. As all answers
    /// here, it stays where it is as long as the class lives, whatever is changed meanwhile.
    const found_member& findMethod(const method_ident_untyped& id) const { return find(&member_tables::methods, id); }
    const found_member& findProperty(const property_ident_untyped& id) const {
        return find(&member_tables::properties, id);
    }
    /// Class level: what the class itself answers when it is the receiver.
    const found_member& findClassMethod(const method_ident_untyped& id) const {
        return find(&member_tables::classMethods, id);
    }
    const found_member& findClassProperty(const property_ident_untyped& id) const {
        return find(&member_tables::classProperties, id);
    }
    /// The position of a declared field in an instance, or -1. Ancestors come first, but for fields that they gained
    /// after the class was in use: a field stays where it is for as long as the class lives.
    std::int64_t findField(const field_ident_untyped& id) const;
    const Field* fieldAt(std::size_t position) const;
    field_ident_untyped fieldIdentifier(std::size_t position) const;
    std::size_t fieldCount() const;

    bool isInterface() const;
    /// The generic that the class is an instance of, or none, and for which types.
    const Class_Generic& generic() const;
    const std::vector<Type>& parameters() const;

    /// Adds a parent after those already there. None, or an error when it would make a class its own ancestor, bring
    /// native values and objects together (see `class_hooks`), or give its instances the data of two native classes.
    Any add_parent_unsafe(const Class_Generic& parent);
    Any add_field_unsafe(const field_ident_untyped& id, const Type& type, const String& doc);
    void add_method_unsafe(const method_ident_untyped& id, object_value_class* definer,
                           const I_Invokable_Generic& method);
    void add_property_unsafe(const property_ident_untyped& id, object_value_class* definer, const Property& property);
    void add_class_method_unsafe(const method_ident_untyped& id, object_value_class* definer,
                                 const I_Invokable_Generic& method);
    void add_class_property_unsafe(const property_ident_untyped& id, object_value_class* definer,
                                   const Property& property);
    void set_doc_unsafe(const String& doc);
    void set_example_unsafe(Language language, const String& example);
    void set_module_unsafe(const Module& module);
    Any set_hooks_unsafe(const class_hooks& hooks);  ///< Entries that are not null replace those of the class.
    void set_generic_unsafe(const Class_Generic& generic, std::vector<Type> parameters);

    /// Leaves methods, properties and the documentation to `declareMembers`.
    void expect_members_unsafe() noexcept { expectsMembers_.store(true, std::memory_order_release); }
    bool expectsMembers() const noexcept { return expectsMembers_.load(std::memory_order_acquire); }
    /// Makes sure that the class has the members that it left for later, those of its ancestors not included. False
    /// while they are being declared further down on this thread. Runs the code of the class, unlike a look-up in a
    /// class that has all its members.
    bool ensureMembers() const;

    void set_interface_unsafe();  ///< The class has no instances of its own; classes that derive from it may.

    /// The instance of this generic for `parameters`: made by the first caller, the same for all.
    Class_Generic genericInstance(std::span<const Type> parameters);
    /// Says how an instance of this generic is derived: called once per new instance to add its parents.
    void set_generic_parents_unsafe(void (*addParents)(object_value_class* instance, std::span<const Type> parameters));

    /// A class that is called makes an instance.
    Any invoke(std::span<const Any> arguments) override;
    Any invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named) override;
    /// The method by which the class answers look-ups itself, when it overrides the protocol of `Any`.
    const found_member& methodProtocol() const;
    const found_member& propertyProtocol() const;
    /// What the functions of the class offer past being called.
    const offered_ways& offered() const;
    /// All tables as they are now, or null while none are built or members are left for later: a look-up builds them.
    const member_tables* presentTables() const noexcept { return tables_.load(std::memory_order_acquire); }
    /// What the class declares itself. Guarded: see `read_declarations`, through which all others read it.
    const class_declarations& declarations() const noexcept { return *declarations_; }
    class_declarations& declarations() noexcept { return *declarations_; }

protected:
    ~object_value_class() override;

    /// Declares the members that were left for later; parents, fields and hooks are there from the beginning. Answers
    /// whether all is done. Until it is, everybody who looks calls this: several threads at once, and code that it runs
    /// itself. No lock of the runtime is held.
    virtual bool declareMembers() { return true; }

private:
    friend struct class_structure;
    const class_tables& tables() const;
    const class_tables& buildTables() const;
    const member_tables& ensureTables() const;
    const found_member& find(member_table member_tables::*table, const identifier& id) const {
        const member_tables* present = tables_.load(std::memory_order_acquire);
        return ((present != nullptr ? *present : ensureTables()).*table).find(id);
    }

    String name_;
    const std::unique_ptr<class_declarations> declarations_;     // Guarded by the one lock of the class structure.
    mutable std::atomic<const class_tables*> outline_{nullptr};  // What is declared so far.
    mutable std::atomic<const member_tables*> tables_{nullptr};  // The same once no member is left for later.
    mutable std::atomic<bool> expectsMembers_{false};
};

/// An instance of a class: its declared fields, and nothing else. Native classes derive their own data from it.
///
/// Fields that are no objects are read without the guard: `changes_` tells whether one was written meanwhile. So a
/// block of fields stays where it is as long as the object lives, even when the class has gained some and there is a
/// larger one.
class LING_EXPORT object_value_object : public object_value {
public:
    explicit object_value_object(object_value_class* klass) : object_value(Kind::Object, klass) {}
    ~object_value_object() override;

    /// Copies a field under the object's guard. `position` comes from the class's `findField`. A native class may keep
    /// a declared field in its own form and answer for it here. Fields that the class gained since the instance was
    /// made are none until they are set.
    virtual Any field(std::size_t position) const;
    virtual void setField(std::size_t position, Any value);
    Any invoke(std::span<const Any> arguments) override;
    Any invokeNamed(std::span<const Any> positional, std::span<const NamedArgument> named) override;

protected:
    /// `fields` is raw memory for so many fields, which is part of the object.
    object_value_object(object_value_class* klass, Any* fields, std::uint32_t count) noexcept;
    void aboutToDie() noexcept override;

private:
    struct field_block;
    /// Marks the fields as being written. Under the guard.
    class change {
    public:
        explicit change(object_value_object& object) noexcept : changes_(object.changes_) {
            changes_.store(changes_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        }
        ~change() { changes_.store(changes_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }
        change(const change&) = delete;
        change& operator=(const change&) = delete;

    private:
        std::atomic<std::uint64_t>& changes_;
    };

    bool readField(std::size_t position, Any& value) const noexcept;
    bool storeField(std::size_t position, Any& value);
    void makeRoom(std::size_t count);

    // None until one is set, but where they are part of the object. Written under guard(), as is all that follows.
    std::atomic<Any*> fields_{nullptr};
    std::atomic<std::uint64_t> changes_{0};  // Odd while fields are being written.
    std::atomic<std::uint32_t> fieldCount_{0};
    field_block* blocks_ = nullptr;  // Owned, the larger one first: those that fields are in, or were once.
};

/// A class of the runtime itself, without members as yet: the start of the runtime adds them once all classes exist.
LING_EXPORT Class_Generic native_class(const char* name, std::initializer_list<Class_Generic> parents);
/// The same for a class whose instances only the runtime makes: neither it nor a class derived from it can be called or
/// allocated, since a plain object in the place of such a value would have nothing in it.
LING_EXPORT Class_Generic runtime_made_class(const char* name, std::initializer_list<Class_Generic> parents);

}  // namespace ling::internal
