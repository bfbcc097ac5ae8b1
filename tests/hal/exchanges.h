// Rows of calls into the device's code, all against one modem that answers each request as its row says.
#pragma once

#include <functional>

#include "qmi_client.h"
#include "support/embedded_run.h"

namespace rbk::test {

// A call, what the modem makes of its requests, and what is to come of it.
struct Exchange {
    const char* catches;
    std::function<std::int32_t()> call;
    std::vector<std::string> answers{};  // actions, one for each request
    std::int32_t result = 0;
    std::string left{};   // in `room`, which is 5A before the call and behind that
    std::string words{};  // a new line of the log has them
};

// For whatever the calls fill.
alignas(8) inline std::uint8_t room[200'100];

// Rules by which a service's requests get these actions one after the other; an empty one: as ever.
std::string in_turn(const std::string& service, const std::vector<std::string>& actions);
// The action that answers with these TLVs.
std::string raw(const std::string& tlvs);
std::string times(std::size_t count, const std::string& text);

// What the modem says unasked, given to a client's callback, and what its receiver is told.
struct Indication {
    const char* catches;
    std::uint32_t message;
    std::string tlvs;
    std::string told;  // empty: nothing
};
void expect_told(const std::vector<Indication>& rows, qmi_client_ind_cb callback, qmi_client_handle client,
                 std::string& told);

class ExchangeTest : public EmbeddedRun {
 public:
    // Before the first use of the link. Every request counts.
    void expect(const std::string& service, const std::vector<Exchange>& rows);
};

}  // namespace rbk::test
