// Identity, properties, workers, waits, conversions and memory.
#include <sys/resource.h>

#include <atomic>
#include <cerrno>

#include "support/home.h"
#include "support/no_threads.h"
#include "support/program.h"
#include "support/wait_until.h"
#include "velmor_rbk_test_cmn.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

// What the shell showed meanwhile, without file, line and function.
template <typename Action>
Lines shown_by(Action action)
{
    Lines bodies;
    for (const std::string& line : lines_of(output_of(action))) {
        const std::size_t at = line.find("] ");
        bodies.push_back(at == std::string::npos ? line : line.substr(line.find(": ", at) + 2));
    }
    return bodies;
}

class UtilsTest : public HomeTest {};

// ---- Identity ----

TEST_F(UtilsTest, NameIsFoundOnceAndReportedInTheLogWithoutLOG)
{
    velmor_hal_close_print();
    const std::string name = program_invocation_short_name;
    for (int i = 0; i < 2; ++i) EXPECT_EQ(velmor_get_current_pid_name(), name);
    EXPECT_EQ(log(), (Lines{std::string("7 velmor_get_current_pid_name, proc_pid_buf = ") + program_invocation_name,
                            "7 velmor_get_current_pid_name, str_pid_name: " + name,
                            "7 velmor_get_current_pid_name, g_pid_info.p_name = " + name}));
}

TEST_F(UtilsTest, IdentityThatCannotBeReadHasANumberAndNoName)
{
    LOG(2, "opens what the log needs");
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{0, files.rlim_max};
    velmor_pid_info info{-1, "stale"};
    const Lines shown = shown_by([&] {
        setrlimit(RLIMIT_NOFILE, &none);
        velmor_get_current_pid_info(&info);
        velmor_get_current_pid_name();
        setrlimit(RLIMIT_NOFILE, &files);
    });
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "p_id: " + std::to_string(getpid()) + ", p_name: "), 1);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), "fopen fail"), 1);
    EXPECT_NE(read_file(home() / "log").find("\n3 fopen fail\n"), std::string::npos);
    EXPECT_STREQ(velmor_get_current_pid_name(), "") << "a failed attempt isn't repeated";
    EXPECT_STREQ(velmor_utils_get_pid_name(), program_invocation_short_name) << "the record has an attempt of its own";
}

// ---- Properties ----

TEST_F(UtilsTest, PropertiesAreBoundedAndNullArgumentsNamed)
{
    const std::string longest(92, 'v');
    const std::string cut = "persist." + std::string(247, 'n');  // 255 characters
    char value[VELMOR_PROPERTY_SIZE] = "as it was";
    EXPECT_EQ(shown_by([&] {
                  velmor_get_property_value(nullptr, value, "");
                  velmor_get_property_value("persist.x", nullptr, "");
                  velmor_get_property_value("persist.x", value, nullptr);
                  EXPECT_STREQ(value, "as it was");
                  velmor_set_property_value(nullptr, "");
                  velmor_set_property_value("persist.x", nullptr);
                  velmor_set_property_value("persist.x", longest.c_str());
                  velmor_set_property_value("persist.x", (longest + "w").c_str());
                  velmor_set_property_value((cut + "x").c_str(), "5");
                  velmor_get_property_value((cut + "y").c_str(), value, "absent");
                  velmor_print_property_value("persist.absent");
                  velmor_print_property_value(nullptr);
              }),
              (Lines{"property_name is null", "property_value is null", "default_property_value is null",
                     "property_name is null", "property_value is null", "persist.x: " + longest,
                     "property_value len(93) is out of range(92)", cut + "x: 5", cut + "y: 5",
                     "persist.absent: null_val", "property_name is null"}));
    EXPECT_NE(read_file(home() / "log").find("7 prop print is started\n"), std::string::npos);
    EXPECT_EQ(read_file(home() / "properties/kept" / cut), "5\n");
}

TEST_F(UtilsTest, NumbersInProperties)
{
    set_property("persist.word", "abc");
    int32_t number = -1;
    EXPECT_EQ(velmor_get_property_value_from_int("persist.word", &number, 7), 0);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(velmor_get_property_value_from_int("persist.absent", nullptr, -7), -7);
    velmor_set_property_value_to_int("persist.number", INT32_MIN);
    EXPECT_EQ(velmor_get_property_value_from_int("persist.number", &number, 7), INT32_MIN);
    EXPECT_EQ(velmor_get_default_data_sub(), 0);
    set_property("persist.radio.default_data_sub", "1");
    EXPECT_EQ(velmor_get_default_data_sub(), 1);
}

TEST_F(UtilsTest, ValuesAreTracedUnlessThePropertyIsNotExactlyOne)
{
    set_property("persist.vendor.radio.print_prop", "11");
    char value[VELMOR_PROPERTY_SIZE];
    EXPECT_EQ(shown_by([&] {
                  velmor_get_property_value("persist.x", value, "5");
                  velmor_print_property_value("persist.x");
                  velmor_print_property_value(nullptr);
              }),
              Lines{});
    const Lines told = log();
    EXPECT_EQ(std::count(told.begin(), told.end(), "7 prop print is stoped"), 1);
}

// ---- Workers and waits ----

TEST_F(UtilsTest, WorkersThatStartRunAndTheOthersHaveNoHandle)
{
    std::atomic<int> seen{0};
    const auto body = [](void* argument) -> void* {
        static_cast<std::atomic<int>*>(argument)->store(5);
        return nullptr;
    };
    EXPECT_NE(velmor_create_pthread(nullptr, body, &seen), 0U);
    EXPECT_TRUE(wait_until([&] { return seen == 5; }));
    const NoThreads no_threads;
    EXPECT_EQ(shown_by([&] {
                  EXPECT_EQ(velmor_create_pthread("VELM DIAG", nullptr, nullptr), 0U);
                  EXPECT_EQ(velmor_create_pthread("PDC_TEST", body, &seen), 0U);
              }),
              (Lines{"function entry ------------->", "pthread[VELM DIAG] will be created",
                     "p_thread_proc_cb is NULL, do nothing", "function exit <-------------",
                     "function entry ------------->", "pthread[PDC_TEST] will be created",
                     "result = " + std::to_string(EAGAIN), "function exit <-------------"}));
}

TEST_F(UtilsTest, WaitsSleepAsOftenAsTheySay)
{
    const struct {
        const char* catches;
        const char* property;
        int32_t asked, waited;
        Lines sleeps;
    } rows[] = {{"DefaultIsNotThree", nullptr, -3, 3, {"sleep 3"}},
                {"ZeroWaits", "9", 0, 0, {}},
                {"PropertyIgnored", "4", -1, 4, {"sleep 4"}},
                {"WordWaits", "long", -1, 0, {}},
                {"NegativePropertyWaits", "-5", -1, -5, {}}};
    for (const auto& row : rows) {
        if (row.property != nullptr) set_property("persist.radio.modem_wait_s", row.property);
        EXPECT_EQ(velmor_modem_wait_s(row.asked), row.waited) << row.catches;
        EXPECT_EQ(calls(), row.sleeps) << row.catches;
    }
}

// ---- Conversions ----

TEST_F(UtilsTest, TextToNumber)
{
    const struct {
        const char* catches;
        std::string text;
        int64_t number;
    } rows[] = {{"UpperPrefixIgnored", "0X1f", 31},
                {"LeadingZeroIsOctal", "010", 10},
                {"NoDigitsRefused", "0x", 0},
                {"PrefixSoughtWithin", "x1", 0},
                {"TailRefused", "3x", 3},
                {"ForeignCharacterEndsHex", "0xG1", 1},
                {"SignTakenInHex", "0x-1", 1},
                {"CaseOfDigits", "0xaBcDeF", 0xabcdef},
                {"PositiveLimitCut", "0x7FFFFFFF", INT32_MAX},
                {"TopDigitWraps", "0x80000000", INT32_MAX},
                {"ProductsNotCutSingly", "0xFFFFFFFF", 0x8ffffffeLL - (1LL << 32)},
                {"SumSaturates", "0x8000000080000000", -2},
                {"LongestWordRefused", "0x" + std::string(46, '0') + "12", 0x12},
                {"LongerWordRead", "0x" + std::string(47, '0') + "12", 0}};
    for (const auto& row : rows) EXPECT_EQ(velmor_string_to_int(row.text.c_str()), row.number) << row.catches;
    EXPECT_EQ(shown_by([&] {
                  EXPECT_EQ(velmor_string_to_int(nullptr), 0);
                  EXPECT_EQ(velmor_hex_string_to_int(nullptr), 0);
                  velmor_hex_string_to_int(std::string(49, '1').c_str());
              }),
              (Lines{"", "input is null", "", "", "", "input is null", "", "", "hex digits(49) are out of range(48)"}));
}

TEST_F(UtilsTest, BytesToText)
{
    const uint8_t bytes[] = {0x01, 0xa2, 0xff};
    const struct {
        const char* catches;
        int32_t len_max, data_len, result;
        std::string text;
    } rows[] = {{"CaseOrBlanks", 20, 3, 1, " 01 A2 FF"},   {"ByteStartedWithoutRoom", 10, 3, 1, " 01 A2"},
                {"RoomOfOneByteRefused", 5, 3, 1, " 01"},  {"RoomForNoByteTaken", 4, 3, 0, "untouched"},
                {"NegativeLengthFollowed", 20, -1, 1, ""}, {"EmptyRefused", 20, 0, 1, ""}};
    for (const auto& row : rows) {
        char text[20] = "untouched";
        EXPECT_EQ(velmor_get_hex_str(text, row.len_max, bytes, row.data_len), row.result) << row.catches;
        EXPECT_EQ(text, row.text) << row.catches;
    }
    char text[7] = "------";
    EXPECT_EQ(velmor_get_hex_str(nullptr, 20, bytes, 3) + velmor_get_hex_str(text, 7, nullptr, 3), 0);
    velmor_byte_to_hex(nullptr, 3, text);
    EXPECT_STREQ(text, "------");
    velmor_byte_to_hex(bytes, 2, text);
    EXPECT_STREQ(text, "01a2--");
}

// ---- Memory ----

TEST_F(UtilsTest, AllocationIsZeroedAndARefusedOneIsTold)
{
    auto* block = static_cast<uint8_t*>(qcril_malloc_adv(64));
    EXPECT_EQ(std::vector<uint8_t>(block, block + 64), std::vector<uint8_t>(64));
    qcril_free_adv(block, __func__, __LINE__);
    qcril_free_adv(nullptr, __func__, __LINE__);
    ASSERT_EQ(pthread_setname_np(pthread_self(), "one_who_asks"), 0);
    volatile size_t too_much = SIZE_MAX / 2;
    EXPECT_EQ(qcril_malloc_adv(too_much), nullptr);
    const std::string line = std::to_string(__LINE__ - 1);
    const std::string ids = std::to_string(getpid()) + "," + std::to_string(getpid());
    EXPECT_EQ(log(), Lines{"3 util: [utils_test.cpp: " + line + "] [one_who_asks(" + ids +
                           ")] TestBody: Fail to allocate memory"});
}

}  // namespace
}  // namespace rbk::test
