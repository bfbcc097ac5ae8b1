// A report of 10 MB parsed and judged, against the library's own parse of the same file.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "bench/ratios.h"
#include "velmor_mbn_utils.h"
#include "velmor_utils_cmn.h"

namespace {

using rbk::bench::AddRatio;

// Items of every kind: ordinary ones, profiles of another name, IMS profiles that are the same, and the VoLTE switch.
std::string item(const std::string& id, const std::string& ref, const std::string& dev)
{
    return "<NvEfsItemData id=\"" + id + "\"><NvItemDataREFERENCE><Member>" + ref +
           "</Member></NvItemDataREFERENCE><NvItemDataDEVICE><Member>" + dev +
           "</Member></NvItemDataDEVICE></NvEfsItemData>\n";
}

class Report {
 public:
    Report()
    {
        char name[] = "/tmp/rbk-bench-report-XXXXXX";
        ::close(::mkstemp(name));
        path_ = name;
        std::string head;
        for (int i = 0; i < 32; ++i) head += i == 8 ? "1 " : "0 ";
        std::string bytes;
        for (int i = 0; i < 200; ++i) bytes += std::to_string(i) + " ";
        std::string content = "<?xml version=\"1.0\"?>\n<NvData>\n";
        for (int i = 0; content.size() < 10'000'000; ++i) {
            content += item("/nv/item_files/modem/item" + std::to_string(i), bytes, "1 " + bytes);
            content += item("/Data_Profiles/Profile1", head + "1 16 3 0 119 101 98 " + bytes, bytes);
            content += item("/Data_Profiles/Profile2", head + "1 16 3 0 105 109 115 ", head + "1 16 3 0 105 109 115 ");
            content += item("/nv/item_files/ims/qp_ims_service_enablement_config", bytes, "0 1 2 ");
        }
        std::ofstream(path_) << content << "</NvData>\n";
        g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb = [](const void*, int32_t) {};
        velmor_hal_get_logcat_print_flag(1);
        velmor_hal_get_shell_print_flag(1);
        velmor_hal_close_print();
    }
    ~Report() { ::unlink(path_.c_str()); }
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;
    const char* path() const { return path_.c_str(); }

 private:
    std::string path_;
};

const Report& report()
{
    static const Report written;
    return written;
}

void report_judged(benchmark::State& state)
{
    const char* path = report().path();
    for (auto _ : state)
        if (parse_mbn_diff_result(path) != 0) state.SkipWithError("the report failed");
}
BENCHMARK(report_judged);

void report_parsed(benchmark::State& state)
{
    const char* path = report().path();
    for (auto _ : state) {
        xmlDoc* doc = xmlParseFile(path);
        if (doc == nullptr) state.SkipWithError("the parse failed");
        xmlFreeDoc(doc);
    }
}
BENCHMARK(report_parsed);

const AddRatio report_row({"a report of 10 MB parsed and judged / the library's own parse", "report_judged",
                           "report_parsed", 1.3});

}  // namespace
