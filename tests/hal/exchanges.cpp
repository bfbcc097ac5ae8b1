#include "hal/exchanges.h"

#include <algorithm>
#include <cstring>

namespace rbk::test {

std::string in_turn(const std::string& service, const std::vector<std::string>& actions)
{
    std::string rules;
    for (std::size_t i = 0; i < actions.size(); ++i)
        if (!actions[i].empty())
            rules += "[[fault]]\nservice = '" + service + "'\nnth = " + std::to_string(i + 1) +
                     "\naction = " + actions[i] + "\n";
    return rules;
}

std::string raw(const std::string& tlvs)
{
    return "'raw'\nbytes = '" + tlvs + "'";
}

std::string times(std::size_t count, const std::string& text)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

void expect_told(const std::vector<Indication>& rows, qmi_client_ind_cb callback, qmi_client_handle client,
                 std::string& told)
{
    for (const Indication& row : rows) {
        std::vector<std::uint8_t> bytes;
        for (std::size_t i = 0; i < row.tlvs.size(); i += 2)
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(row.tlvs.substr(i, 2), nullptr, 16)));
        told.clear();
        callback(client, row.message, bytes.data(), static_cast<std::uint32_t>(bytes.size()), nullptr);
        EXPECT_EQ(told, row.told) << row.catches;
    }
}

void ExchangeTest::expect(const std::string& service, const std::vector<Exchange>& rows)
{
    std::vector<std::string> actions;
    for (const Exchange& row : rows) actions.insert(actions.end(), row.answers.begin(), row.answers.end());
    scenario(in_turn(service, actions));
    std::size_t sent = 0;
    for (const Exchange& row : rows) {
        SCOPED_TRACE(row.catches);
        const std::size_t before = row.words.empty() ? 0 : log_count(row.words);
        std::memset(room, 0x5A, sizeof room);
        EXPECT_EQ(row.call(), row.result);
        const std::size_t size = row.left.size() / 2;
        EXPECT_EQ(hex({room, room + size}), row.left);
        EXPECT_EQ(std::count(room + size, std::end(room), 0x5A), std::end(room) - room - size)
            << "written behind its end";
        EXPECT_EQ(requests().size(), sent += row.answers.size());
        if (!row.words.empty()) {
            EXPECT_GT(log_count(row.words), before) << row.words;
        }
    }
}

}  // namespace rbk::test
