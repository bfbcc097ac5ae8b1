// Identity, properties, workers, waits and conversions.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "support/home.h"
#include "support/no_threads.h"
#include "support/program.h"
#include "support/wait_until.h"
#include "velmor_rbk_test_cmn.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

// What the shell showed, without file, line and function.
Lines bodies_of(const std::string& out)
{
    Lines bodies;
    for (const std::string& line : lines_of(out)) {
        const std::size_t at = line.find("] ");
        bodies.push_back(at == std::string::npos ? line : line.substr(line.find(": ", at) + 2));
    }
    return bodies;
}

class UtilsTest : public HomeTest {};

// ---- Identity ----

TEST_F(UtilsTest, IdentityIsFilledOnceWithNumberAndLastPathComponent)
{
    EXPECT_EQ(velmor_utils_get_pid_number(), getpid());
    EXPECT_STREQ(velmor_utils_get_pid_name(), program_invocation_short_name);
    EXPECT_EQ(output_of([] { velmor_utils_get_pid_name(); }), "");
}

TEST_F(UtilsTest, IdentityRefusesANullRecord)
{
    EXPECT_EQ(bodies_of(output_of([] { velmor_get_current_pid_info(nullptr); })),
              (Lines{"function entry ------------->", "p_pid_info is NULL", "function exit <-------------"}));
}

TEST_F(UtilsTest, NameAloneIsReportedInTheLogWithoutLOG)
{
    velmor_hal_close_print();
    const std::string name = velmor_get_current_pid_name();
    EXPECT_EQ(name, program_invocation_short_name);
    const Lines told = log();
    ASSERT_EQ(told.size(), 3u);
    EXPECT_TRUE(told[0].starts_with("7 velmor_get_current_pid_name, proc_pid_buf = ")) << told[0];
    EXPECT_EQ(told[1], "7 velmor_get_current_pid_name, str_pid_name: " + name);
    EXPECT_EQ(told[2], "7 velmor_get_current_pid_name, g_pid_info.p_name = " + name);
    velmor_get_current_pid_name();
    EXPECT_EQ(log(), Lines{});
}

TEST_F(UtilsTest, IdentityThatCannotBeReadHasANumberAndNoName)
{
    LOG(2, "opens what the log needs");
    log();
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{0, files.rlim_max};
    velmor_pid_info info{-1, "stale"};
    const std::string out = output_of([&] {
        setrlimit(RLIMIT_NOFILE, &none);
        velmor_get_current_pid_info(&info);
        EXPECT_STREQ(velmor_get_current_pid_name(), "");
        setrlimit(RLIMIT_NOFILE, &files);
    });
    const std::string number = std::to_string(getpid());
    EXPECT_EQ(bodies_of(out), (Lines{"function entry ------------->", "proc_pid_path: /proc/" + number + "/cmdline",
                                     "fopen fail", "p_id: " + number + ", p_name: ", "function exit <-------------"}));
    EXPECT_EQ(log().back(), "3 fopen fail");
    EXPECT_EQ(info.p_id, getpid());
    EXPECT_STREQ(velmor_get_current_pid_name(), "") << "a failed attempt isn't repeated";
}

TEST_F(UtilsTest, CommandLineWithoutASlashIsTheName)
{
    const RunResult result = run_rbk({"2"}, {.name = "bench_shell"});
    const Lines bodies = bodies_of(result.out);
    EXPECT_EQ(std::count(bodies.begin(), bodies.end(), "proc_pid_buf should be name"), 1);
    EXPECT_EQ(std::count(bodies.begin(), bodies.end(), "p_pid_info->p_name: bench_shell"), 1);
}

// ---- Properties ----

TEST_F(UtilsTest, NullArgumentsOfAPropertyAreNamedAndTouchNothing)
{
    char value[VELMOR_PROPERTY_SIZE] = "as it was";
    EXPECT_EQ(bodies_of(output_of([&] {
                  velmor_get_property_value(nullptr, value, "");
                  velmor_get_property_value("persist.x", nullptr, "");
                  velmor_get_property_value("persist.x", value, nullptr);
                  velmor_set_property_value(nullptr, "");
                  velmor_set_property_value("persist.x", nullptr);
              })),
              (Lines{"property_name is null", "property_value is null", "default_property_value is null",
                     "property_name is null", "property_value is null"}));
    EXPECT_STREQ(value, "as it was");
}

TEST_F(UtilsTest, ValueOfNinetyTwoCharactersIsWrittenOneOfNinetyThreeIsNot)
{
    const std::string longest(92, 'v');
    char value[VELMOR_PROPERTY_SIZE];
    EXPECT_EQ(bodies_of(output_of([&] { velmor_set_property_value("persist.x", longest.c_str()); })),
              Lines{"persist.x: " + longest});
    EXPECT_EQ(bodies_of(output_of([&] { velmor_set_property_value("persist.x", (longest + "w").c_str()); })),
              Lines{"property_value len(93) is out of range(92)"});
    velmor_get_property_value("persist.x", value, "absent");
    EXPECT_EQ(value, longest);
}

TEST_F(UtilsTest, NameIsCutAtTwoHundredAndFiftyFiveCharacters)
{
    const std::string cut = "persist." + std::string(247, 'n');
    char value[VELMOR_PROPERTY_SIZE];
    velmor_set_property_value((cut + "x").c_str(), "5");
    EXPECT_EQ(read_file(home() / "properties/kept" / cut), "5\n");
    velmor_get_property_value((cut + "y").c_str(), value, "absent");
    EXPECT_STREQ(value, "5");
}

TEST_F(UtilsTest, NumbersInProperties)
{
    set_property("persist.word", "abc");
    int32_t number = -1;
    EXPECT_EQ(velmor_get_property_value_from_int("persist.word", &number, 7), 0);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(velmor_get_property_value_from_int("persist.absent", &number, -7), -7);
    EXPECT_EQ(number, -7);
    velmor_set_property_value_to_int("persist.number", -2147483647 - 1);
    EXPECT_EQ(velmor_get_property_value_from_int("persist.number", &number, 7), -2147483647 - 1);
    EXPECT_EQ(velmor_get_default_data_sub(), 0);
    set_property("persist.radio.default_data_sub", "1");
    EXPECT_EQ(velmor_get_default_data_sub(), 1);
}

struct TraceCase {
    const char* catches;
    std::optional<std::string> property;
    bool traced;
};
const TraceCase kTraceCases[] = {{"DefaultIsOff", std::nullopt, true},
                                 {"OneIsOff", "1", true},
                                 {"FirstCharacterDecides", "11", false},
                                 {"ZeroIsOn", "0", false}};

class TraceGateTest : public HomeTest, public testing::WithParamInterface<TraceCase> {};

TEST_P(TraceGateTest, ValuesAreTracedWhenThePropertyIsExactlyOne)
{
    if (GetParam().property) set_property("persist.vendor.radio.print_prop", *GetParam().property);
    set_property("persist.x", "5");
    char value[VELMOR_PROPERTY_SIZE];
    const Lines shown = bodies_of(output_of([&] {
        velmor_get_property_value("persist.x", value, "");
        velmor_print_property_value("persist.absent");
        velmor_print_property_value(nullptr);
    }));
    EXPECT_EQ(shown, GetParam().traced ? (Lines{"persist.x: 5", "persist.absent: null_val", "property_name is null"})
                                       : Lines{});
    const Lines told = log();
    EXPECT_EQ(
        std::count(told.begin(), told.end(), GetParam().traced ? "7 prop print is started" : "7 prop print is stoped"),
        1);
}

INSTANTIATE_TEST_SUITE_P(, TraceGateTest, testing::ValuesIn(kTraceCases),
                         [](const auto& row) { return row.param.catches; });

// ---- Workers and waits ----

TEST_F(UtilsTest, WorkerRunsWithItsArgument)
{
    std::atomic<int> seen{0};
    EXPECT_NE(velmor_create_pthread(
                  nullptr,
                  [](void* argument) -> void* {
                      static_cast<std::atomic<int>*>(argument)->store(5);
                      return nullptr;
                  },
                  &seen),
              0u);
    EXPECT_TRUE(wait_until([&] { return seen == 5; }));
}

TEST_F(UtilsTest, WorkerWithoutABodyIsNotStarted)
{
    pthread_t handle = 1;
    EXPECT_EQ(bodies_of(output_of([&] { handle = velmor_create_pthread("VELM DIAG", nullptr, nullptr); })),
              (Lines{"function entry ------------->", "pthread[VELM DIAG] will be created",
                     "p_thread_proc_cb is NULL, do nothing", "function exit <-------------"}));
    EXPECT_EQ(handle, 0u);
}

TEST_F(UtilsTest, WorkerThatCannotBeStartedHasNoHandle)
{
    pthread_t handle = 1;
    const NoThreads no_threads;
    const Lines shown = bodies_of(output_of([&] {
        handle = velmor_create_pthread(
            "PDC_TEST", [](void*) -> void* { return nullptr; }, nullptr);
    }));
    EXPECT_EQ(handle, 0u);
    EXPECT_EQ(shown.at(2), "result = " + std::to_string(EAGAIN));
}

TEST_F(UtilsTest, WaitsSleepAsOftenAsTheySay)
{
    const struct {
        const char* catches;
        const char* property;
        int32_t asked, waited;
        Lines sleeps;
    } rows[] = {{"ZeroWaits", "9", 0, 0, {}},
                {"NumberIgnored", "9", 2, 2, {"sleep 2"}},
                {"PropertyIgnored", "4", -1, 4, {"sleep 4"}},
                {"WordWaits", "long", -1, 0, {}},
                {"NegativePropertyWaits", "-5", -1, -5, {}},
                {"DefaultIsNotThree", nullptr, -3, 3, {"sleep 3"}}};
    for (const auto& row : rows) {
        std::filesystem::remove_all(home() / "properties");
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
        const char* text;
        int32_t number;
    } rows[] = {{"HexPrefixIgnored", "0x10", 16},
                {"DecimalReadAsHex", "16", 16},
                {"UpperPrefixIgnored", "0X1f", 31},
                {"LeadingZeroIsOctal", "010", 10},
                {"SignIgnored", "-5", -5},
                {"NoDigitsRefused", "0x", 0},
                {"PrefixSoughtWithin", "x1", 0},
                {"TailRefused", "3x", 3},
                {"ForeignCharacterEndsHex", "0xG1", 1},
                {"SignTakenInHex", "0x-1", 1},
                {"CaseOfDigits", "0xaBcDeF", 0xabcdef},
                {"PositiveLimitCut", "0x7FFFFFFF", 0x7fffffff},
                {"TopDigitWraps", "0x80000000", 0x7fffffff},
                {"ProductsNotCutSingly", "0xFFFFFFFF", static_cast<int32_t>(0x8ffffffe)},
                {"SumSaturates", "0x8000000080000000", -2},
                {"LongestWordRefused", "0x000000000000000000000000000000000000000000000012", 0x12}};
    for (const auto& row : rows) EXPECT_EQ(velmor_string_to_int(row.text), row.number) << row.catches;
}

TEST_F(UtilsTest, TextThatIsNoNumberIsRefusedWithAMessage)
{
    const std::string too_long(49, '1');
    EXPECT_EQ(bodies_of(output_of([&] {
                  EXPECT_EQ(velmor_string_to_int(nullptr), 0);
                  EXPECT_EQ(velmor_hex_string_to_int(nullptr), 0);
                  EXPECT_EQ(velmor_hex_string_to_int(too_long.c_str()), 0);
              })),
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
    EXPECT_EQ(velmor_get_hex_str(nullptr, 20, bytes, 3), 0);
    EXPECT_EQ(velmor_get_hex_str(text, 7, nullptr, 3), 0);
    velmor_byte_to_hex(nullptr, 3, text);
    EXPECT_STREQ(text, "------");
    velmor_byte_to_hex(bytes, 2, text);
    EXPECT_STREQ(text, "01a2--");
}

TEST_F(UtilsTest, DeviceStates)
{
    EXPECT_STREQ(velmor_get_device_type_string_ex(3), "[3]SAR_SENSOR_STATE");
    EXPECT_STREQ(velmor_get_device_type_string_ex(22), "[22]SAR_SENSOR3_STATE");
    EXPECT_EQ(velmor_get_device_type_string_ex(23), nullptr);
    const char* const properties[] = {"wifi_state",
                                      "hotspot_state",
                                      "modem_state",
                                      "sar_sensor_state",
                                      "hall_sensor_state",
                                      "audio_receiver_state",
                                      "mcc_state",
                                      "bluetooth_pan_state",
                                      "bluetooth_state",
                                      "sar_sensor2_state",
                                      "cable_state",
                                      "usb_state",
                                      "use_case_test",
                                      "radiopower_state",
                                      "simcard_state",
                                      "smart_tx_state",
                                      "white_list_state",
                                      "gpd_sensor_state",
                                      "gravity_y_axes_state",
                                      "ntn_radio_power_state",
                                      "hall_sensor2_state",
                                      "sar_sensor2_one_type",
                                      "sar_sensor3_state"};
    for (uint32_t i = 0; i < 23; ++i)
        EXPECT_EQ(velmor_get_device_state_prop_name(i), std::string("debug.device.") + properties[i]);
    EXPECT_EQ(velmor_get_device_state_prop_name(23), nullptr);
    EXPECT_EQ(velmor_get_device_state_prop_name(UINT32_MAX), nullptr);
}

// ---- Memory ----

TEST_F(UtilsTest, AllocationIsZeroedAndARefusedOneIsTold)
{
    auto* block = static_cast<uint8_t*>(qcril_malloc_adv(64));
    ASSERT_NE(block, nullptr);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(block[i], 0);
    qcril_free_adv(block, __func__, __LINE__);
    qcril_free_adv(nullptr, __func__, __LINE__);

    volatile size_t too_much = SIZE_MAX / 2;
    EXPECT_EQ(qcril_malloc_adv(too_much), nullptr);
    const int line = __LINE__ - 1;
    char expected[200];
    snprintf(expected, sizeof expected, "3 util: [utils_test.cpp: %d] [%s(%d,%d)] TestBody: Fail to allocate memory",
             line, program_invocation_short_name, getpid(), getpid());
    EXPECT_EQ(log(), Lines{expected});
}

}  // namespace
}  // namespace rbk::test
