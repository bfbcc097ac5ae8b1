// Group 3 as people run it: antenna tests, and the modem's files about them.
#include "support/group_test.h"

namespace rbk::test {
namespace {

const std::string kRf = "RIL[velmor_rbk_test_rf.cpp:N] ";
const std::string kEntry = kRf + "velmor_test_rf_do: ";
const std::string kApi = "RIL[velmor_extend_api.cpp:N] velmor_extend_qmi_send_sync: ";
const std::string kGpioFile = "modem/efs/0/nv/item_files/modem/velmor/rf_ant_port_config";
const std::string kTxFile = "modem/efs/0/nv/item_files/modem/antenna/ant_tx_config";

// A line of an operation.
std::string line(const std::string& operation, const std::string& words)
{
    return kRf + operation + ": " + words + "\n";
}
std::string dump(const std::string& operation, const std::vector<std::uint8_t>& bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) text += line(operation, " " + hex({byte}));
    return text + line(operation, "");
}
std::string failed(int code)
{
    return kEntry + "note: Error happen! error_code(" + std::to_string(code) + ")\n" + help_of(3);
}

class RfGroup : public GroupTest {};

TEST_F(RfGroup, GpioTestIsSetShownAndClosed)
{
    const std::string set = "velmor_gpio_test_set";
    const std::string get = "velmor_gpio_test_get";
    EXPECT_EQ(shown({"3", "0", "5", "-2"}),
              line(set, set) + line(set, set + ", gpio_v[0]: 5") + line(set, set + ", gpio_v[1]: -2"));
    EXPECT_EQ(requests().back().bytes, envelope(4, 512,
                                                "00000000"
                                                "00000000"
                                                "02000000"
                                                "05000000"
                                                "FEFFFFFF"));
    EXPECT_EQ(shown({"3", "1"}), line(get, get) + line(get, "data len(12)data: ") +
                                     dump(get, {2, 0, 0, 0, 5, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(requests().back().bytes.substr(2 * (17 + 4), 2), "2F") << "the path's length with its terminator";
    EXPECT_EQ(shown({"3", "2"}), line("velmor_gpio_test_closed", "velmor_gpio_test_closed"));
    EXPECT_FALSE(std::filesystem::exists(home() / kGpioFile));
    EXPECT_EQ(shown({"3", "1"}),
              line(get, get) + line(get, "velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS") + failed(-2));
}

TEST_F(RfGroup, TransmitTestIsSetShownAndClosed)
{
    const std::string set = "velmor_rf_tx_test_set";
    const std::string get = "velmor_rf_tx_test_get";
    EXPECT_EQ(shown({"3", "3", "1", "4", "0xFFFFFFFFFFFFFFFE"}), line(set, set + ", argc(6)") + line(set, " v_ant(1)") +
                                                                     line(set, " v_sys(4)") +
                                                                     line(set, " v_band_list(18446744073709551614)"));
    EXPECT_EQ(requests().back().bytes, envelope(4, 512,
                                                "01000000"
                                                "00000000"
                                                "01000000"
                                                "04000000"
                                                "FEFFFFFFFFFFFFFF"));
    EXPECT_EQ(shown({"3", "4"}),
              line(get, get) + line(get, "data len(16)\ndata: ") +
                  dump(get, {1, 0, 0, 0, 4, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(requests().back().bytes.substr(2 * (17 + 4), 2), "2B");
    EXPECT_EQ(shown({"3", "5"}), line("velmor_rf_tx_test_closed", "velmor_rf_tx_test_closed"));
    EXPECT_FALSE(std::filesystem::exists(home() / kTxFile));
    EXPECT_EQ(shown({"3", "5"}),
              line("velmor_rf_tx_test_closed", "velmor_rf_tx_test_closed") +
                  line("velmor_rf_tx_test_closed", "velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS") + failed(-2));
}

TEST_F(RfGroup, BandsAreReadInEitherBase)
{
    shown({"3", "3", "1", "4", "0x10"});
    const std::string hex_request = requests().back().bytes;
    shown({"3", "3", "1", "4", "16"});
    EXPECT_EQ(requests().back().bytes, hex_request);
}

TEST_F(RfGroup, ValuesBehindTheFiftiethAreOnlyCounted)
{
    const std::string text = shown(with_data({"3", "0"}, 51, "-1"));
    EXPECT_NE(text.find("gpio_v[49]: -1\n"), std::string::npos);
    EXPECT_EQ(text.find("gpio_v[50]"), std::string::npos);
    EXPECT_EQ(sent(8, 4 + 200 + 4), "33000000" + std::string(400, 'F') + "00000000");
    EXPECT_EQ(read_file(home() / kGpioFile).size(), 204U) << "the modem stores what there is";
    EXPECT_EQ(shown({"3", "0"}), line("velmor_gpio_test_set", "velmor_gpio_test_set"));
    EXPECT_EQ(sent(8, 8), "0000000000000000");
}

TEST_F(RfGroup, LongFileIsShownUpToTheBuffer)
{
    scenario("[efs]\n'0:/nv/item_files/modem/antenna/ant_tx_config' = { fill = 0x5A, size = 1000 }\n");
    EXPECT_TRUE(shown({"3", "4"})
                    .ends_with("data len(365)\ndata: \n" +
                               dump("velmor_rf_tx_test_get", std::vector<std::uint8_t>(365, 0x5A))));
}

TEST_F(RfGroup, FailedRequestShowsTheHelp)
{
    scenario("[[fault]]\nservice = 'extended'\naction = 'error'\ncode = 94\n");
    const std::string error = kApi + "94 QMI service framework error. Check client\n";
    EXPECT_TRUE(shown({"3", "0", "1"})
                    .ends_with(error +
                               line("velmor_gpio_test_set", "velmor_extend_qmi_send_sync fail, REQUEST_ID_COMMON") +
                               failed(-3)));
    EXPECT_TRUE(shown({"3", "3", "1", "4", "1"})
                    .ends_with(error +
                               line("velmor_rf_tx_test_set", "velmor_extend_qmi_send_sync fail, REQUEST_ID_COMMON") +
                               failed(-3)));
}

struct Refusal {
    const char* catches;
    Words words;
    std::string lines;  // before the help
};

const std::string kError = kEntry + "note: Error happen! error_code(268431370)\n";

std::string shape(const std::string& operation, int sub_command)
{
    return line(operation, operation) +
           line(operation, "note: Cmd error, should be: rbk 3 " + std::to_string(sub_command) +
                               " , Pls refer to the following cmd:") +
           kError;
}
std::string tx_words(const char* argc)
{
    return line("velmor_rf_tx_test_set", std::string("velmor_rf_tx_test_set, argc(") + argc + ")") +
           line("velmor_rf_tx_test_set", "note: need 5 inputs, Pls refer to the following cmd:") + kError;
}

const Refusal kRefusals[] = {
    {"NoSubCommand", {"3"}, kEntry + "note: Too few parameters, Pls refer to the following cmd:\n"},
    {"SubCommand6Run",
     {"3", "6"},
     kEntry + "note: the second parameters is invalid, Pls refer to the following cmd:\n"},
    {"NegativeSubCommandUsedAsIndex",
     {"3", "-1"},
     kEntry + "note: the second parameters is invalid, Pls refer to the following cmd:\n"},
    {"GpioGetWithMore", {"3", "1", "x"}, shape("velmor_gpio_test_get", 1)},
    {"GpioCloseWithMore", {"3", "2", "x"}, shape("velmor_gpio_test_closed", 2)},
    {"TxGetWithMore", {"3", "4", "x"}, shape("velmor_rf_tx_test_get", 4)},
    {"TxCloseWithMore", {"3", "5", "x"}, shape("velmor_rf_tx_test_closed", 5)},
    {"TxSetWithoutBands", {"3", "3", "1", "4"}, tx_words("5")},
    {"TxSetWithMore", {"3", "3", "1", "4", "1", "2"}, tx_words("7")},
};

class RfRefusal : public GroupTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RfRefusal, EndsInItsNoteAndTheHelp)
{
    EXPECT_EQ(shown(GetParam().words), GetParam().lines + help_of(3));
    EXPECT_TRUE(trace().empty());
}
INSTANTIATE_TEST_SUITE_P(All, RfRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.catches; });

}  // namespace
}  // namespace rbk::test
