#include "harnessFixture.h"

namespace {

using Names = std::vector<std::string>;

class Registry : public HarnessTest {
  protected:
    static Names registeredAfter(const std::vector<const char*>& added) {
        for (const char* name : added) audunittest_register_test(body::passOnce, name);
        Names names;
        for (auto* entry = audunittest::tests; entry != nullptr; entry = entry->next) {
            names.emplace_back(entry->name);
        }
        return names;
    }
};

TEST_F(Registry, IsSortedByName) {
    EXPECT_EQ(registeredAfter({"b", "a", "c"}), (Names{"a", "b", "c"}));
}

TEST_F(Registry, IsSortedInByteOrder) {
    EXPECT_EQ(registeredAfter({"a", "_", "Z", "b", "B", "\xC3\xA9", "aa", "1"}),
              (Names{"1", "B", "Z", "_", "a", "aa", "b", "\xC3\xA9"}));
}

TEST_F(Registry, KeepsEqualNamesInOrderOfRegistration) {
    audunittest_register_test(body::failTwice, "b");
    audunittest_register_test(body::passOnce, "c");
    audunittest_register_test(body::passTwice, "b");
    audunittest_register_test(body::passOnce, "a");
    audunittest_register_test(body::failOnce, "b");

    ASSERT_EQ(registeredAfter({}), (Names{"a", "b", "b", "b", "c"}));
    const auto* firstB = audunittest::tests->next;
    EXPECT_EQ(firstB->function, body::failTwice);
    EXPECT_EQ(firstB->next->function, body::passTwice);
    EXPECT_EQ(firstB->next->next->function, body::failOnce);
}

TEST_F(Registry, KeepsTheCallersNameAndDoesNotCopyIt) {
    static const char name[] = "name";
    audunittest_register_test(body::passOnce, name);
    EXPECT_EQ(audunittest::tests->name, name);
}

using RegistryDeathTest = Registry;

TEST_F(RegistryDeathTest, NeedsAFunctionAndAName) {
    EXPECT_EXIT(audunittest_register_test(nullptr, "a"), Aborted,
                assertionReport("audunittest_register_test", "function"));
    EXPECT_EXIT(audunittest_register_test(body::passOnce, nullptr), Aborted,
                assertionReport("audunittest_register_test", "name"));
    EXPECT_EXIT(audunittest_register_test(nullptr, nullptr), Aborted,
                assertionReport("audunittest_register_test", "function"));
}

TEST_F(RegistryDeathTest, AbortsWithoutAWordWhenMemoryIsOut) {
    const auto registerWithoutMemory = [] {
        fakeMemory::failNextAllocation();
        audunittest_register_test(body::passOnce, "a");
    };
    EXPECT_EXIT(registerWithoutMemory(), Aborted, lastWords(""));
}

}  // namespace
