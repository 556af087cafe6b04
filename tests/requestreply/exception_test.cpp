#include <type_traits>

#include "requestreply/fixture.hpp"
#include "support/vtable.hpp"

namespace {

using requestreply_test::thrown_by;
using zemtra::LogicException;
using zemtra::Rethrowable;
using zemtra::RuntimeException;

template <class X>
class EveryException : public ::testing::Test {
 protected:
  static constexpr bool runtime = std::is_base_of_v<RuntimeException, X>;
  using Root = std::conditional_t<runtime, RuntimeException, LogicException>;
  using OtherRoot = std::conditional_t<runtime, LogicException, RuntimeException>;
  using Standard = std::conditional_t<runtime, std::runtime_error, std::logic_error>;
  using OtherStandard = std::conditional_t<runtime, std::logic_error, std::runtime_error>;
};

using Exceptions =
    ::testing::Types<RuntimeException, zemtra::TimeoutException, zemtra::OutOfResourcesException, LogicException,
                     zemtra::UnsupportedException, zemtra::BadParameterException, zemtra::PreconditionNotMetException,
                     zemtra::NotEnabledException, zemtra::ImmutablePolicyException, zemtra::InconsistentPolicyException,
                     zemtra::AlreadyDeletedException, zemtra::IllegalOperationException>;
TYPED_TEST_SUITE(EveryException, Exceptions, );

TYPED_TEST(EveryException, IsCaughtAcrossTheLibrarysBorderByEachOfItsBasesAndNoOther) {
  EXPECT_FALSE((std::is_base_of_v<typename TestFixture::OtherStandard, TypeParam>));
  EXPECT_FALSE((std::is_base_of_v<typename TestFixture::OtherRoot, TypeParam>));
  const auto raise = [] { TypeParam("M").raise(); };
  EXPECT_THROW(raise(), TypeParam);
  EXPECT_THROW(raise(), typename TestFixture::Root);
  EXPECT_THROW(raise(), typename TestFixture::Standard);
  EXPECT_THROW(raise(), Rethrowable);
  EXPECT_THROW(raise(), std::exception);
}

TYPED_TEST(EveryException, HasTheStandardBaseFirstThenRethrowableAndNoDataOfItsOwn) {
  TypeParam exception("M");
  const char* begin = reinterpret_cast<const char*>(&exception);
  EXPECT_EQ(reinterpret_cast<const char*>(static_cast<typename TestFixture::Standard*>(&exception)), begin);
  EXPECT_EQ(reinterpret_cast<const char*>(static_cast<Rethrowable*>(&exception)),
            begin + sizeof(typename TestFixture::Standard));
  EXPECT_EQ(sizeof(TypeParam), sizeof(typename TestFixture::Standard) + sizeof(void*));
}

TYPED_TEST(EveryException, HasItsVirtualOperationsInOrder) {
  const TypeParam exception("M");
  const std::string slot_of_destructor = support::virtual_function(&exception, 0);
  const std::string name = slot_of_destructor.substr(0, slot_of_destructor.find("::~"));
  EXPECT_NE(slot_of_destructor.find("::~"), std::string::npos) << slot_of_destructor;
  EXPECT_EQ(support::virtual_function(&exception, 1), slot_of_destructor);
  const typename TestFixture::Standard standard("M");
  EXPECT_EQ(support::virtual_function(&exception, 2), support::virtual_function(&standard, 2)) << "what()";
  EXPECT_EQ(support::virtual_function(&exception, 3), name + "::raise");
  EXPECT_EQ(support::virtual_function(&exception, 4), name + "::rethrow");

  const Rethrowable* rethrowable = &exception;
  EXPECT_EQ(support::virtual_function(rethrowable, 0), "non-virtual thunk to " + name + "::rethrow");
  EXPECT_EQ(support::virtual_function(rethrowable, 1), "non-virtual thunk to " + slot_of_destructor);
}

TYPED_TEST(EveryException, KeepsItsMessageInACopyAndWhenItIsRaisedThroughItsRoot) {
  for (const std::string msg : {"", "a message of more than fifteen characters", " %s: \n"}) {
    TypeParam exception(msg);
    EXPECT_EQ(TypeParam(exception).what(), msg);
    typename TestFixture::Root& root = exception;
    const auto [type, raised] = thrown_by([&] { root.raise(); });
    EXPECT_EQ(*type, typeid(TypeParam));
    EXPECT_EQ(raised, msg);
  }
}

TYPED_TEST(EveryException, IsRethrownAsItselfWithTheNewestContextInFront) {
  for (const std::string context : {"A", "", " a context of more than fifteen characters "}) {
    const TypeParam exception("");
    const Rethrowable& rethrowable = exception;
    const auto [type, msg] = thrown_by([&] {
      try {
        rethrowable.rethrow(context);
      } catch (const Rethrowable& ex) { ex.rethrow("B"); }
    });
    EXPECT_EQ(*type, typeid(TypeParam));
    EXPECT_EQ(msg, "B caused by " + context + " caused by ");
    EXPECT_STREQ(exception.what(), "");
  }
}

}  // namespace
