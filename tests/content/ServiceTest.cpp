#include "tests/content/ServiceFixture.h"

#include <ostream>

namespace searchsystem {

namespace {

struct BehaviourCase {
  const char *name;
  const char *content;
  UnreadReason reason;

  friend void PrintTo(const BehaviourCase &row, std::ostream *out) { *out << row.name; }
};

class BehaviourTest : public ServiceFixture, public testing::WithParamInterface<BehaviourCase> {};

TEST_P(BehaviourTest, EndsWithItsReason) {
  const ContentAnswer answer = ask(GetParam().content, "what no text holds");
  EXPECT_FALSE(answer.holds);
  EXPECT_EQ(static_cast<int>(answer.reason), static_cast<int>(GetParam().reason));
  // And the next one is read as usual.
  EXPECT_TRUE(ask("text\nWhat follows", "FOLLOWS").holds);
}

constexpr auto crashed = UnreadReason::readerCrashed;
constexpr BehaviourCase behaviourCases[] = {
    {"Nothing", "text\n", UnreadReason::none},
    {"AReason", "reason\n3", UnreadReason::noText},
    {"Open", "open", crashed},
    {"Connect", "connect", crashed},
    {"Fork", "fork", crashed},
    {"Execute", "execute", crashed},
    {"Signal", "signal", crashed},
    {"Trace", "trace", crashed},
    {"ChangePriority", "raise limits", crashed},
    {"Receive", "receive", crashed},
    {"ChangeTheFile", "change the file", crashed},
    {"MoveTheHostsOffset", "seek", crashed},
    {"MapTheFile", "map the file", crashed},
    {"MapCode", "map code", crashed},
    {"Crash", "crash", crashed},
    {"Abort", "abort", crashed},
    {"Throw", "throw", crashed},
    {"LeaveWithoutAWord", "leave", crashed},
    {"MapMoreThanAllowed", "map much", UnreadReason::tooLarge},
    {"FillMemory", "fill memory", UnreadReason::tooLarge},
    {"Spin", "spin", UnreadReason::tookTooLong},
    {"UnknownRecord", "unknown record", crashed},
    {"EmptyText", "empty text", crashed},
    {"HugeRecord", "huge record", crashed},
    {"UnknownReason", "unknown reason", crashed},
    {"EndWithoutReason", "end without reason", crashed},
    {"EndlessText", "endless text", UnreadReason::tooLarge},
};

INSTANTIATE_TEST_SUITE_P(Behaviours, BehaviourTest, testing::ValuesIn(behaviourCases),
                         [](const auto &row) { return row.param.name; });

} // namespace

} // namespace searchsystem
