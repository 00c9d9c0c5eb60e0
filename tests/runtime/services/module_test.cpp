#include "runtime/support/values.h"

#include <algorithm>

namespace ling::testing {
namespace {

// Modules live as long as the process, so each test uses names of its own.

Any valueAt(const Any& holder, std::string_view name) { return holder.propertyValue(property_ident_untyped(name)); }

TEST(ModuleTree, RefusesNamesWithEmptyOrBrokenParts) {
    for (const String& name : {String(), String(u"."), String(u".a"), String(u"names."), String(u"names..b"),
                               String(std::u16string_view(u"names\0", 6)), String(std::u16string{u'a', 0xD800})}) {
        const std::string expected = "error: Invalid module name: '" + name.toStdString() + "'.";
        EXPECT_EQ(shown(find_or_create_module(name)), expected);
        EXPECT_TRUE(find_module(name).isNone());
        EXPECT_EQ(shown(register_module(unchecked<Module>(Module::getClass()(name)))), expected);
    }
}

TEST(ModuleTree, MakesWhatIsMissingAbove) {
    const Any made = find_or_create_module(u"tree_a.\u00e4\U0001F600.c");
    ASSERT_TRUE(Module::cast(made));
    EXPECT_EQ(unchecked<Module>(made).name(), u"tree_a.\u00e4\U0001F600.c");
    const Module top = find_module(u"tree_a");
    const Module middle = find_module(u"tree_a.\u00e4\U0001F600");
    ASSERT_FALSE(top.isNone() || middle.isNone());
    EXPECT_TRUE(valueAt(top, "\u00e4\U0001F600").isSameAs(middle));
    EXPECT_TRUE(valueAt(middle, "c").isSameAs(made));
    EXPECT_TRUE(find_or_create_module(u"tree_a.\u00e4\U0001F600.c").isSameAs(made));
    EXPECT_TRUE(find_module(u"tree_a.c").isNone());
    EXPECT_TRUE(find_module(u"Tree_a").isNone());
}

TEST(ModuleTree, GathersWhatLanguagesBind) {
    const std::uint64_t before = module_tree_version();
    const Any inner = find_or_create_module(u"gathered_tree.inner");
    EXPECT_EQ(module_tree_version(), before + 1);
    EXPECT_EQ(top_level_modules().back().name(), u"gathered_tree");
    EXPECT_TRUE(inner.setPropertyValue(Module::$$bindMembers, true).isNone());
    EXPECT_TRUE(binding_modules().back().isSameAs(inner));
    const Any outer = find_module(u"gathered_tree");
    (void)insert_property_value(outer, Module::$$bindMembers, true);
    EXPECT_EQ(module_tree_version(), before + 3);
    EXPECT_TRUE(binding_modules().back().isSameAs(inner)) << "Parents come before children.";
    (void)insert_property_value(outer, Module::$$bindMembers, false);
    (void)find_or_create_module(u"gathered_tree.inner.most");
    EXPECT_EQ(module_tree_version(), before + 3);
    EXPECT_TRUE(inner.setPropertyValue(Module::$$bindMembers, false).isNone());
}

TEST(ModuleTree, ANameMayBeTaken) {
    const Any holder = find_or_create_module(u"tree_taken");
    insert_property_value(holder, property_ident_untyped("value"), 5);
    insert_property_value(holder, property_ident_untyped("nothing"), Any());
    EXPECT_EQ(shown(find_or_create_module(u"tree_taken.value")), "error: The name 'tree_taken.value' is taken.");
    EXPECT_EQ(shown(find_or_create_module(u"tree_taken.value.b")), "error: The name 'tree_taken.value' is taken.");
    EXPECT_EQ(shown(find_or_create_module(u"tree_taken.nothing")), "error: The name 'tree_taken.nothing' is taken.");
    EXPECT_TRUE(find_module(u"tree_taken.value").isNone());
    EXPECT_TRUE(valueAt(holder, "value").isSameAs(Any(5)));
}

TEST(ModuleTree, TakesModulesMadeElsewhere) {
    const Class_Generic cls = defclass_impl("ForeignModule", "")
                                  .parent(Module::getClass())
                                  .classProperty(property_ident_untyped("limit"), property_builder().value(7))
                                  .build();
    const Any made = cls(u"tree_foreign.inner");
    ASSERT_TRUE(Module::cast(made));
    EXPECT_TRUE(find_module(u"tree_foreign.inner").isNone());
    EXPECT_TRUE(register_module(unchecked<Module>(made)).isNone());
    EXPECT_TRUE(register_module(unchecked<Module>(made)).isNone()) << "It is there already.";
    EXPECT_TRUE(find_module(u"tree_foreign.inner").isSameAs(made));
    EXPECT_TRUE(valueAt(find_module(u"tree_foreign"), "inner").isSameAs(made));
    EXPECT_EQ(shown(register_module(unchecked<Module>(cls(u"tree_foreign.inner")))),
              "error: The name 'tree_foreign.inner' is taken.");
    EXPECT_EQ(shown(find_or_create_module(u"tree_foreign.inner.limit")),
              "error: The name 'tree_foreign.inner.limit' is taken.");
    EXPECT_EQ(shown(find_or_create_module(u"tree_foreign.inner.name")), "tree_foreign.inner.name");
}

TEST(ModuleTree, ThreadsThatMakeOneModuleGetOne) {
    for (int round = 0; round < 200; ++round) {
        const String name = String(u"tree_race{}.leaf").arg(round);
        std::vector<Any> made(4);
        inThreads(4, [&](int number) {
            Any& mine = made[static_cast<std::size_t>(number)];
            mine = find_or_create_module(name);
            const Module parent = find_module(name.sliced(0, name.lastIndexOf(u".")));
            EXPECT_TRUE(valueAt(parent, "leaf").isSameAs(mine)) << "Found, but not linked.";
        });
        for (const Any& each : made)
            ASSERT_TRUE(each.isSameAs(made[0]));
    }
    std::vector<String> names;
    for (const Any& module : modules().copyItems())
        names.push_back(unchecked<Module>(module).name());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end()) << "One name, two modules.";
}

TEST(ModuleMembers, FunctionsBecomeProperties) {
    const FunctionCL_Generic twice = make_function(
        "twice", "x", [](std::int64_t x) { return 2 * x; }, "Doubles.");
    EXPECT_TRUE(register_function("members_f", twice).isNone());
    EXPECT_TRUE(register_function("members_f", twice).isNone()) << "It is there already.";
    const Module module = find_module(u"members_f");
    const Property property = property_of(module, property_ident_untyped("twice"));
    ASSERT_FALSE(property.isNone());
    EXPECT_EQ(property.doc(), u"Doubles.");
    EXPECT_EQ(shown(unchecked<I_Invokable_Generic>(property.value())(4)), "8");
    ASSERT_EQ(module.functions().size(), 1u);
    EXPECT_EQ(module.functions()[0].id, method_ident_untyped("twice"));
    EXPECT_EQ(shown(valueAt(module, "functions")), "[twice(x)]");
    const FunctionCL_Generic other = make_function("twice", "", [] {});
    EXPECT_EQ(shown(register_function("members_f", other)), "error: The name 'members_f.twice' is taken.");
    EXPECT_EQ(shown(register_function("members_f", make_function("", "", [] {}))),
              "error: A member of the module 'members_f' needs a name.");
    EXPECT_EQ(shown(register_function("members_f..x", other)), "error: Invalid module name: 'members_f..x'.");
}

TEST(ModuleMembers, ClassesKnowTheirModule) {
    const Class_Generic cls = defclass_impl("Item", "members_c.sub").doc("An item.").build();
    EXPECT_EQ(qualname(cls), u"members_c.sub.Item");
    EXPECT_TRUE(cls.parentModule().isSameAs(find_module(u"members_c.sub")));
    EXPECT_EQ(shown(valueAt(find_module(u"members_c.sub"), "classes")), "[members_c.sub.Item]");
    EXPECT_EQ(property_of(find_module(u"members_c.sub"), property_ident_untyped("Item")).doc(), u"An item.");
    const Class_Generic other = defclass_impl("Item", "").build();
    EXPECT_EQ(shown(register_class("members_c.sub", other)), "error: The name 'members_c.sub.Item' is taken.");
    EXPECT_EQ(qualname(other), u"Item");
    EXPECT_EQ(shown(find_or_create_module(u"members_c.sub.Item")), "error: The name 'members_c.sub.Item' is taken.");
}

TEST(ModuleMembers, OneOfManyThreadsGetsAName) {
    for (int round = 0; round < 50; ++round) {
        const std::string module = "members_race" + std::to_string(round);
        std::atomic<int> winners{0};
        inThreads(8,
                  [&](int) { winners += register_class(module, defclass_impl("Item", "").build()).isNone() ? 1 : 0; });
        EXPECT_EQ(winners, 1);
        const std::vector<Class_Generic> classes = find_module(String(module)).classes();
        ASSERT_EQ(classes.size(), 1u);
        EXPECT_TRUE(valueAt(find_module(String(module)), "Item").isSameAs(classes[0]));
    }
}

TEST(ModuleMembers, AFunctionAndAModuleDoNotShareAName) {
    for (int round = 0; round < 300; ++round) {
        const std::string module = "members_shared" + std::to_string(round);
        const Module parent = unchecked<Module>(find_or_create_module(String(module)));
        const FunctionCL_Generic function = make_function("leaf", "", [] {});
        Any child;
        Any registered;
        inThreads(2, [&](int number) {
            if (number == 0)
                child = find_or_create_module(String(module + ".leaf"));
            else
                registered = register_function(module, function);
        });
        const bool isFunction = registered.isNone();
        ASSERT_NE(isFunction, !is_error_result(child)) << "Both or none has the name.";
        EXPECT_TRUE(valueAt(parent, "leaf").isSameAs(isFunction ? Any(function) : child));
        EXPECT_EQ(find_module(String(module + ".leaf")).isNone(), isFunction);
        EXPECT_EQ(parent.functions().size(), isFunction ? 1u : 0u);
    }
}

class FindClass : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        const Class_Generic inner = defclass_impl("Inner", "").build();
        const Class_Generic outer = defclass_impl("Outer", "classes.sub")
                                        .classProperty(property_ident_untyped("Inner"), property_builder().value(inner))
                                        .classProperty(property_ident_untyped("number"), property_builder().value(5))
                                        .build();
        // A module of another class, whose members are those of its class.
        const Class_Generic exported =
            defclass_impl("ExportedModule", "")
                .parent(Module::getClass())
                .classProperty(property_ident_untyped("Outer"), property_builder().value(outer))
                .classProperty(property_ident_untyped("late"),
                               property_builder().getter([outer] { return Lazy_Generic([outer] { return outer; }); }))
                .classProperty(property_ident_untyped("broken"),
                               property_builder().getter([]() -> Any { return failure(u"Broken."); }))
                .build();
        register_module(unchecked<Module>(exported(u"classes.exported")));
    }
};

TEST_F(FindClass, WalksModulesAndTheirMembers) {
    const std::vector<std::pair<const char16_t*, const char16_t*>> rows{
        {u"classes.sub.Outer", u"classes.sub.Outer"},      {u"classes.sub.Outer.Inner", u"Inner"},
        {u"classes.exported.Outer", u"classes.sub.Outer"}, {u"classes.exported.Outer.Inner", u"Inner"},
        {u"classes.exported.late", u"classes.sub.Outer"},  {u"ling.List", u"ling.List"},
    };
    for (const auto& [path, found] : rows) {
        const Class_Generic cls = find_class(path);
        EXPECT_EQ(cls.isNone() ? String(u"none") : qualname(cls), String(found)) << String(path).toStdString();
    }
}

TEST_F(FindClass, LeavesNothingBehindOfUnknownNames) {
    const Module module = find_module(u"ling");
    EXPECT_TRUE(find_class(u"ling.unknownToAll1").isNone());
    for (const char* function : {"bound_method", "property_value"})
        (void)unchecked<I_Invokable_Generic>(module.propertyValue(property_ident_untyped(function)))(
            module, String(u"unknownToAll2"));
    EXPECT_EQ(find_interned(std::string_view("unknownToAll1")), nullptr);
    EXPECT_EQ(find_interned(std::string_view("unknownToAll2")), nullptr);
}

TEST_F(FindClass, AnswersNoneForAnythingElse) {
    for (const char16_t* path :
         {u"", u".", u"List", u"ling", u"ling.", u".ling.List", u"ling..List", u"ling.list", u"ling.display",
          u"classes", u"classes.sub", u"classes.sub.Outer.number", u"classes.sub.Outer.number.real",
          u"classes.sub.Outer.", u"classes.exported.broken", u"classes.absent.Outer", u"classes.sub.Outer.Inner.Outer"})
        EXPECT_TRUE(find_class(path).isNone()) << String(path).toStdString();
}

}  // namespace
}  // namespace ling::testing
