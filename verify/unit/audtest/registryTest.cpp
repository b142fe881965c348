#include "harnessFixture.h"

namespace {

using Names = std::vector<std::string>;

class Registry : public HarnessTest {};

TEST_F(Registry, IsSortedByName) {
    for (const char* name : {"b", "a", "c"}) audunittest_register_test(body::passOnce, name);
    EXPECT_EQ(registeredNames(), (Names{"a", "b", "c"}));
}

TEST_F(Registry, IsSortedInByteOrder) {
    for (const char* name : {"a", "_", "Z", "b", "B", "\xC3\xA9", "aa", "1"}) {
        audunittest_register_test(body::passOnce, name);
    }
    EXPECT_EQ(registeredNames(), (Names{"1", "B", "Z", "_", "a", "aa", "b", "\xC3\xA9"}));
}

TEST_F(Registry, KeepsEqualNamesInOrderOfRegistration) {
    audunittest_register_test(body::passOnce, "b");
    audunittest_register_test(body::passOnce, "c");
    audunittest_register_test(body::passTwice, "b");
    audunittest_register_test(body::passOnce, "a");
    audunittest_register_test(body::failOnce, "b");

    ASSERT_EQ(registeredNames(), (Names{"a", "b", "b", "b", "c"}));
    const auto* firstB = audunittest::tests->next;
    EXPECT_EQ(firstB->function, body::passOnce);
    EXPECT_EQ(firstB->next->function, body::passTwice);
    EXPECT_EQ(firstB->next->next->function, body::failOnce);
}

TEST_F(Registry, KeepsTheCallersNameAndFunction) {
    static const char name[] = "name";
    audunittest_register_test(body::failTwice, name);
    EXPECT_EQ(audunittest::tests->name, name);
    EXPECT_EQ(audunittest::tests->function, body::failTwice);
    EXPECT_EQ(audunittest::tests->next, nullptr);
}

using RegistryDeathTest = Registry;

TEST_F(RegistryDeathTest, NeedsAFunction) {
    EXPECT_EXIT(audunittest_register_test(nullptr, "a"), ::testing::KilledBySignal(SIGABRT),
                assertionReport("audunittest_register_test", "function"));
}

TEST_F(RegistryDeathTest, NeedsAName) {
    EXPECT_EXIT(audunittest_register_test(body::passOnce, nullptr),
                ::testing::KilledBySignal(SIGABRT),
                assertionReport("audunittest_register_test", "name"));
}

TEST_F(RegistryDeathTest, ChecksTheFunctionFirst) {
    EXPECT_EXIT(audunittest_register_test(nullptr, nullptr), ::testing::KilledBySignal(SIGABRT),
                assertionReport("audunittest_register_test", "function"));
}

TEST_F(RegistryDeathTest, AbortsWithoutAWordWhenMemoryIsOut) {
    const auto registerWithoutMemory = [] {
        fakeMemory::failNextAllocation();
        audunittest_register_test(body::passOnce, "a");
    };
    EXPECT_EXIT(registerWithoutMemory(), ::testing::KilledBySignal(SIGABRT), lastWords(""));
}

}  // namespace
