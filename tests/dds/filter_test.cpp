#include "filter/filter.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "allocations.hpp"
#include "recorded_log.hpp"
#include "types/builtin_plugins.hpp"

namespace {

const std::string own_guid = "@sample_identity.writer_guid.value";
const std::string related_guid = "@related_sample_identity.writer_guid.value";
const std::string own_number = "@sample_identity.sequence_number";
const std::string related_number = "@related_sample_identity.sequence_number";
const std::string guid_one = "&hex(010f10ab000000000000000000000000)";
const std::string guid_two = "&hex(020F10AB000000000000000000000000)";

class Filtering : public testing::Test {
 protected:
  Filtering() {
    identity_ = {{{1, 0x0f, 0x10, 0xab}}, {0, 5}};
    related_ = {{{2, 0x0f, 0x10, 0xab}}, {-1, 7}};
  }

  void set_parameters(const std::vector<const char*>& texts) {
    const int count = static_cast<int>(texts.size());
    ASSERT_TRUE(parameters_.ensure_length(count, count));
    for (int i = 0; i < count; ++i) { DDS_String_replace(&parameters_[i], texts[static_cast<std::size_t>(i)]); }
  }
  std::unique_ptr<const dds::Filter> compile(const std::string& expression,
                                             const DDS_TypePlugin& type = dds::keyed_string_plugin) {
    return dds::Filter::compile(expression.c_str(), parameters_, type, "Context");
  }
  bool admits(const std::string& expression) {
    const std::unique_ptr<const dds::Filter> filter = compile(expression);
    EXPECT_NE(filter, nullptr) << expression;
    return filter != nullptr && filter->admits({identity_, related_, data_});
  }
  void expect_admitted(const std::vector<std::string>& expressions) {
    for (const std::string& expression : expressions) { EXPECT_TRUE(admits(expression)) << expression; }
  }
  void expect_rejected(const std::vector<std::string>& expressions) {
    for (const std::string& expression : expressions) { EXPECT_FALSE(admits(expression)) << expression; }
  }
  /// The expression is wrong at the character marked by ^, which is not part of it.
  void expect_wrong(std::string marked, const std::string& fault,
                    const DDS_TypePlugin& type = dds::keyed_string_plugin) {
    const std::size_t position = marked.find('^');
    ASSERT_NE(position, std::string::npos) << marked;
    marked.erase(position, 1);
    EXPECT_EQ(compile(marked, type), nullptr) << marked;
    EXPECT_EQ(log_.take_text(),
              "bad parameter: filter expression, character " + std::to_string(position + 1) + ": " + fault)
        << marked;
  }

  DDS_SampleIdentity_t identity_;
  DDS_SampleIdentity_t related_;
  char key_[4] = "key";
  char value_[10] = "it's text";
  DDS_KeyedString keyed_string_{key_, value_};
  const void* data_ = &keyed_string_;
  DDS_StringSeq parameters_;
  RecordedLog log_;
};

TEST_F(Filtering, ComparesGuidsOctetByOctet) {
  expect_admitted({own_guid + " = " + guid_one, related_guid + "=" + guid_two, related_guid + " <> " + guid_one,
                   related_guid + " != " + guid_one, guid_one + " = " + own_guid,
                   own_guid + " = &HEX(010F10Ab000000000000000000000000)"});
  expect_rejected({own_guid + " = " + guid_two, own_guid + " <> " + guid_one,
                   own_guid + " = &hex(010f10ab000000000000000000000001)"});
}

TEST_F(Filtering, ComparesSequenceNumbersAsSigned64BitNumbers) {
  expect_admitted({own_number + " = 5", own_number + " > -1", own_number + " < +6", related_number + " = -4294967289",
                   related_number + " < 0", related_number + ".high = -1", related_number + ".low = 7",
                   own_number + ".high = 0", own_number + ".low <> 4"});
  expect_rejected({own_number + " <> 5", related_number + " >= 0"});
  identity_.sequence_number = DDS::SEQUENCE_NUMBER_MAX;
  related_.sequence_number = {-0x7fffffff - 1, 0};
  expect_admitted({own_number + " = 9223372036854775807", own_number + ".low = 4294967295",
                   related_number + " = -9223372036854775808", related_number + " < " + "-9223372036854775807"});
}

TEST_F(Filtering, ComparesStringMembersOctetByOctet) {
  expect_admitted({"key = 'key'", "value = 'it''s text'", "'kex' < key", "key > 'Key'", "key < 'kez'", "key > 'ke'",
                   "key <> ''", "key >= 'key'", "key <= 'key'"});
  expect_rejected({"key = 'KEY'", "key < 'key'", "value = 'it'", "key > '\xff'"});
}

TEST_F(Filtering, EveryComparisonOnAnAbsentStringIsFalse) {
  for (const void* absent : {static_cast<const void*>(nullptr), static_cast<const void*>(&keyed_string_)}) {
    data_ = absent;
    keyed_string_.value = nullptr;
    expect_rejected({"value = ''", "value <> 'x'", "value < 'x'", "value >= ''"});
    expect_admitted({"NOT value = 'x'", "value = 'x' OR " + own_number + " = 5"});
  }
}

TEST_F(Filtering, KeywordsHaveNoCaseAndBlanksAreOptionalWhereTokensEnd) {
  expect_admitted({"not(key='x')aNd" + own_number + "=5\n\tOr key='y'", "\t" + own_number + "=5 ",
                   "key='key'AND value<>'x'", "NOT NOT key = 'key'"});
}

TEST_F(Filtering, ParametersStandForLiteralsOfTheFieldsType) {
  set_parameters({"&hex(010f10ab000000000000000000000000)", " 5 ", "key", "'it''s text'", "'", "5"});
  expect_admitted({own_guid + " = %0", own_number + " = %1", "%1 = " + own_number, "key = %2", "value = %3",
                   "key = %2 AND value = %3 AND NOT value = %2", own_number + " = %5", "key > %5", "key=%2 OR key=%2",
                   own_number + " = %01"});
  expect_wrong("key = ^%4", "the parameter's text is no literal of the field's type");
  expect_wrong("key = 'x' OR key = ^%6", "no such parameter");
  expect_wrong("key = ^%99999999999999999999", "no such parameter");
  expect_wrong(own_number + " = ^%2", "the parameter's text is no literal of the field's type");
  expect_wrong(own_guid + " = ^%1", "the parameter's text is no literal of the field's type");
  DDS_String_free(parameters_[2]);
  parameters_[2] = nullptr;
  expect_wrong("key = ^%2", "null parameter");
}

TEST_F(Filtering, PointsAtTheCharacterWhereAnExpressionGoesWrong) {
  const std::string operand = "expected a field, a literal, NOT or an opening parenthesis";
  expect_wrong("^", operand);
  expect_wrong("  ^", operand);
  expect_wrong("key = 'a' AND ^", operand);
  expect_wrong("key = 'a' OR ^OR key = 'b'", operand);
  expect_wrong("(^)", operand);
  expect_wrong("NOT ^= 'a'", operand);
  expect_wrong("key ^'a'", "expected a comparison operator");
  expect_wrong("key^", "expected a comparison operator");
  expect_wrong("(key^)", "expected a comparison operator");
  expect_wrong("key = ^", "expected a field or a literal");
  expect_wrong("key = ^(key = 'a')", "expected a field or a literal");
  expect_wrong("key = 'a' ^key = 'b'", "expected AND, OR or the end");
  expect_wrong("key = 'a'^)", "expected AND, OR or the end");
  expect_wrong("(key = 'a'^", "expected AND, OR or a closing parenthesis");
  expect_wrong("key ^== 'a'", "unknown comparison operator");
  expect_wrong("key ^=< 'a'", "unknown comparison operator");
  expect_wrong("^keys = 'a'", "unknown field");
  expect_wrong("key = ^values", "unknown field");
  expect_wrong("^@sample_identity.writer_guid = " + guid_one, "unknown field");
  expect_wrong("^@SAMPLE_IDENTITY.sequence_number = 1", "unknown field");
}

TEST_F(Filtering, PointsAtTokensThatAreNone) {
  expect_wrong("key = ^'a", "string without closing quote");
  expect_wrong("key = ^'a''", "string without closing quote");
  expect_wrong("key = ^#", "unexpected character");
  expect_wrong("^\xc3\xa4 = 'a'", "unexpected character");
  expect_wrong("key = ^\"a\"", "unexpected character");
  expect_wrong(own_guid + " = ^&hex (00)", "expected &hex(");
  expect_wrong(own_guid + " = ^&oct(00)", "expected &hex(");
  expect_wrong(own_guid + " = ^&hex(00", "&hex without closing parenthesis");
  expect_wrong(own_number + " = ^-", "expected digits after the sign");
  expect_wrong(own_number + " = ^5x", "expected an integer");
  expect_wrong(own_number + " = ^5.0", "expected an integer");
  expect_wrong("key = ^%", "expected the number of a parameter after %");
  expect_wrong("key = ^%x", "expected the number of a parameter after %");
}

TEST_F(Filtering, PointsAtComparisonsOfUnlikeTypes) {
  const std::string guid = "expected &hex( with 32 hexadecimal digits )";
  for (const char* op : {"<", "<=", ">", ">="}) {
    expect_wrong(own_guid + " ^" + op + " " + guid_one, "a GUID has no order, expected = or <>");
    expect_wrong(guid_one + " ^" + op + " " + related_guid, "a GUID has no order, expected = or <>");
  }
  expect_wrong(own_guid + " = ^5", guid);
  expect_wrong(own_guid + " = ^'010f10ab000000000000000000000000'", guid);
  expect_wrong(own_guid + " = ^&hex()", guid);
  expect_wrong(own_guid + " = ^&hex(010f10ab00000000000000000000000)", guid);
  expect_wrong(own_guid + " = ^&hex(010f10ab0000000000000000000000000)", guid);
  expect_wrong(own_guid + " = ^&hex(010f10ab00000000000000000000000g)", guid);
  expect_wrong("value = ^5", "expected 'text'");
  expect_wrong("^5 = value", "expected 'text'");
  expect_wrong("value = ^" + guid_one, "expected 'text'");
  expect_wrong(own_number + " = ^'5'", "expected an integer");
  expect_wrong(own_number + " = ^9223372036854775808", "integer beyond 64 bits");
  expect_wrong("key = ^value", "expected a literal, not a second field");
  expect_wrong("5 = ^6", "expected a field, not a second literal");
}

TEST_F(Filtering, OffersTheMembersThatTheTypeHas) {
  EXPECT_NE(compile("value = 'a'", dds::string_plugin), nullptr);
  EXPECT_NE(compile("key = 'a'", dds::keyed_octets_plugin), nullptr);
  expect_wrong("^key = 'a'", "unknown field", dds::string_plugin);
  expect_wrong("^value = 'a'", "unknown field", dds::keyed_octets_plugin);
  expect_wrong("^value = 'a'", "unknown field", dds::octets_plugin);
}

TEST_F(Filtering, RefusesNullAndWhatIsTooLongOrTooDeep) {
  EXPECT_EQ(dds::Filter::compile(nullptr, parameters_, dds::string_plugin, "Context"), nullptr);
  EXPECT_EQ(log_.take_text(), "bad parameter: filter expression, character 1: null expression");

  const std::string comparison = own_number + " = 5";
  const std::string deepest = std::string(64, '(') + comparison + std::string(64, ')');
  EXPECT_TRUE(admits(deepest));
  EXPECT_TRUE(admits(deepest + " AND " + deepest)) << "depth is not length";
  expect_wrong(std::string(64, '(') + "^(" + comparison + std::string(65, ')'), "nested too deeply");
  std::string nots;
  for (int i = 0; i < 64; ++i) { nots += "NOT "; }
  EXPECT_TRUE(admits(nots + comparison));
  expect_wrong(nots + "^(" + comparison + ")", "nested too deeply");

  const std::string longest = comparison + std::string(dds::Filter::max_length - comparison.size(), ' ');
  EXPECT_TRUE(admits(longest));
  expect_wrong(longest + "^ ", "expression too long");
  set_parameters({std::string(dds::Filter::max_length + 1, 'x').c_str()});
  expect_wrong("key = ^%0", "parameter too long");
}

TEST_F(Filtering, TheLongestRowOfOperandsIsEvaluatedWithoutAllocation) {
  set_parameters({std::string(dds::Filter::max_length, 'x').c_str()});
  for (const std::string keyword : {" AND ", " OR "}) {
    std::string row = keyword == " AND " ? "key<>%0" : "key=%0";
    const std::string next = keyword + row;
    while (row.size() + next.size() + 20 < dds::Filter::max_length) { row += next; }
    int before = allocation_count();
    const std::unique_ptr<const dds::Filter> filter = compile(row + keyword + "key = 'key'");
    ASSERT_NE(filter, nullptr);
    EXPECT_LT(allocation_count() - before, 200) << "a parameter is kept once, however often it is used";
    before = allocation_count();
    EXPECT_TRUE(filter->admits({identity_, related_, data_}));
    EXPECT_EQ(allocation_count(), before);
  }
}

}  // namespace
