/* Group 11: puts the modem into trouble on purpose, switches debug prints, and tests the shell's own mechanisms. Each
 * operation tells by its messages how it went; the entry doesn't look at results. */
#include "velmor_rbk_smart_test.h"

#include <atomic>

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "velmor_extend_cmn.h"
#include "velmor_extend_nvefs.h"
#include "velmor_rbk_groups.h"
#include "velmor_utils_cmn.h"
#include "velmor_utils_timer.h"

#define SSR_LEVEL_PROP        "persist.vendor.ssr.restart_level"
#define SSR_LEVEL_BACKUP_PROP "persist.vendor.ssr.restart_level_bak"
#define SSR_LEVEL_CLOSED      "ALL_DISABLE"
#define SSR_WAIT_PROP         "persist.radio.ssr_wait_s"
#define SSR_WAIT_DEFAULT_S    5
#define PRINT_STATS_PROP      "persist.vendor.radio.print_stats"

/* How often this shell has changed the restart level for a full dump: one 32-bit counter. */
#define EFS_PATH_MODEM_SSR_UPDATE_COUNT "/nv/item_files/modem/velmor/ssr_update_count"

#define SMART_SUB 0  // the files of this group stand on subscription 0

const char *g_share_memory_file_path = "/data/vendor/modem/share_memory";
int32_t     g_share_memory_size = 100;

static std::atomic<int32_t> g_delay_timer_running;  // set by the timer test, cleared by the timer's callback

/* Length of a path without its terminator. */
static uint32_t path_len(const char *path)
{
    return static_cast<uint32_t>(strlen(path));
}

// ---- Restart, dump and sync ----

static int32_t velmor_smart_test_modem_ssr()
{
    const int32_t ssr_type = COMMON_SSR_TYPE_RESTART;
    common_rsp    rsp;
    LOG(2, "Will trigger SSR of modem");
    velmor_save_modem_ssr_count(ssr_type);
    return velmor_send_common_qmi_msg(COMMON_TYPE_SSR, sizeof(ssr_type), &ssr_type, &rsp);
}

static int32_t velmor_smart_test_nv_sync()
{
    common_rsp rsp;
    LOG(2, "Will trigger NV SYNC");
    return velmor_send_common_qmi_msg(COMMON_TYPE_NV_SYNC, 0, nullptr, &rsp);
}

/* A file that can't be read counts as 0. */
static uint32_t velmor_smart_test_read_ssr_update_flag()
{
    uint32_t      update_cnt = 0;
    uint32_t      len = sizeof(update_cnt);
    const char   *path = EFS_PATH_MODEM_SSR_UPDATE_COUNT;
    const int32_t ret = velmor_efs_read(SMART_SUB, path, path_len(path), &update_cnt, &len);
    LOG(2, "EFS_PATH_MODEM_SSR_UPDATE_COUNT read ret: %d, old update_cnt: %d, len: %d", ret, update_cnt, len);
    if (ret != 0) {
        LOG(1, "velmor_efs_read failed, maybe empty");
        update_cnt = 0;
    }
    return update_cnt;
}

static void velmor_smart_test_save_ssr_update_flag()
{
    const uint32_t update_cnt = velmor_smart_test_read_ssr_update_flag() + 1;
    const char    *path = EFS_PATH_MODEM_SSR_UPDATE_COUNT;
    const int32_t  ret = velmor_efs_write(SMART_SUB, path, path_len(path), &update_cnt, sizeof(update_cnt));
    LOG(2, "EFS_PATH_MODEM_SSR_UPDATE_COUNT write ret: %d, new update_cnt: %d", ret, update_cnt);
}

/* Seconds between closing restarts and the dump; a negative number takes the property's. A positive one is waited for, 0
 * goes straight on, and one that is negative still is for the caller to stop at. */
static int32_t velmor_smart_test_ssr_wait_s(int32_t wait_s)
{
    if (wait_s < 0) velmor_get_property_value_from_int(SSR_WAIT_PROP, &wait_s, SSR_WAIT_DEFAULT_S);
    LOG(2, "ssr wait_s = %d", wait_s);
    if (wait_s < 1) {
        LOG(2, "modem ssr will not wait");
    } else {
        LOG(2, "wait-start(%ds) ...", wait_s);
        sleep(static_cast<uint32_t>(wait_s));
        LOG(2, "wait-end(%ds)", wait_s);
    }
    return wait_s;
}

/* A modem that may restart gives no full dump, so restarts are closed first; the level from before the first change is
 * kept for people, and nothing here brings it back. */
static int32_t velmor_smart_test_full_dump()
{
    char level[VELMOR_PROPERTY_SIZE] = {};
    char backup[VELMOR_PROPERTY_SIZE] = {};
    velmor_get_property_value(SSR_LEVEL_PROP, level, "ALL_ENABLE");
    velmor_get_property_value(SSR_LEVEL_BACKUP_PROP, backup, "");
    if (backup[0] == '\0') {
        LOG(2, "need to save ssr state");
        velmor_set_property_value(SSR_LEVEL_BACKUP_PROP, level);
    }
    LOG(2, "Will trigger Full Dump, the current state: %s, the default state: %s", level, backup);
    if (strcmp(level, SSR_LEVEL_CLOSED) != 0) {
        LOG(2, "need to close ssr");
        velmor_set_property_value(SSR_LEVEL_PROP, SSR_LEVEL_CLOSED);
        velmor_smart_test_save_ssr_update_flag();
        const int32_t wait_s = velmor_smart_test_ssr_wait_s(-1);
        if (wait_s < 0) {
            LOG(2, "wait_s < 0, ssr is stoped");
            return wait_s;
        }
    }
    const int32_t ssr_type = COMMON_SSR_TYPE_FULL_DUMP;
    common_rsp    rsp;
    velmor_save_modem_ssr_count(ssr_type);
    return velmor_send_common_qmi_msg(COMMON_TYPE_FULL_DUMP, sizeof(ssr_type), &ssr_type, &rsp);
}

// ---- Print switches ----

static int32_t velmor_smart_test_ap_hydra_switch(int opt)
{
    LOG(2, "ap_hydra_print, opt = %d", opt);
    velmor_set_property_value(PRINT_STATS_PROP, opt == 1 ? "1" : "2");
    LOG(2, "success, need to reboot");
    return 0;
}

/* Writes a modem's print mask, or deletes it to turn the print off, and restarts the modem so that it takes that up.
 * Reports under the name of the switch. */
static int32_t set_print_file(const char *name, int opt, const char *path, uint32_t value)
{
    int32_t result;
    if (opt == 1) {
        result = velmor_efs_write(SMART_SUB, path, path_len(path), &value, sizeof(value));
        if (result != 0) LOG_FROM(name, 1, "velmor_efs_write failed");
    } else {
        result = velmor_efs_delete(SMART_SUB, path, path_len(path));
        if (result != 0) LOG_FROM(name, 1, "velmor_efs_delete failed");
    }
    if (result != 0) return result;
    velmor_smart_test_nv_sync();
    velmor_smart_test_modem_ssr();
    LOG_FROM(name, 2, "success, pls wait 10 seconds ");
    return 0;
}

static int32_t velmor_smart_test_bp_hydra_print_switch(int opt)
{
    LOG(2, "bp_hydra_print, opt = %d", opt);
    return set_print_file(__func__, opt, "/hydra/hydra_print_mask", 31);
}

static int32_t velmor_smart_test_bp_qmi_print_switch(int opt)
{
    LOG(2, "bp_qmi_print, opt = %d", opt);
    return set_print_file(__func__, opt, "/nv/item_files/modem/velmor/qmi_print_flag", 1);
}

static int32_t velmor_smart_test_bp_rf_print_switch(int opt)
{
    LOG(2, "bp_rf_print, opt = %d", opt);
    return set_print_file(__func__, opt, "/nv/item_files/modem/velmor/rf_print_mask", 15);
}

// ---- Shared memory ----

/* Reports under the name of the test that it is a step of. */
static int32_t show_mapping(const char *name, int fd)
{
    const size_t size = static_cast<size_t>(g_share_memory_size);
    int32_t      ret = ftruncate(fd, g_share_memory_size);
    LOG_FROM(name, 2, "ftruncate, ret: %d", ret);
    if (ret != 0) {
        LOG_FROM(name, 1, "ftruncate error");
        return ret;
    }
    void *mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    LOG_FROM(name, 2, "mmap, data_ptr: 0x%08x", static_cast<uint32_t>(reinterpret_cast<uintptr_t>(mapped)));
    if (mapped == MAP_FAILED) {
        LOG_FROM(name, 1, "mmap error");
        return -1;
    }
    const auto *data_ptr = static_cast<const uint8_t *>(mapped);
    for (int32_t i = 0; i < 5; ++i) LOG_FROM(name, 2, "data_ptr[%d]: %d", i, data_ptr[i]);
    ret = munmap(mapped, size);
    LOG_FROM(name, 2, "munmap, ret: %d", ret);
    if (ret != 0) LOG_FROM(name, 1, "munmap error");
    return ret;
}

/* Shows whether some other process left bytes in the file. */
static int32_t velmor_smart_test_sh_test_read()
{
    LOG(2, "g_share_memory_file_path: %s", g_share_memory_file_path);
    const int fd = open(g_share_memory_file_path, O_RDWR | O_CREAT, 0777);
    LOG(2, "open, fd: %d", fd);
    if (fd < 0) {
        LOG(1, "shm_open error");
        return -1;
    }
    const int32_t ret = show_mapping(__func__, fd);
    LOG(1, "close fd");  // at the level of a failure, though nothing is wrong: the line has always stood there
    close(fd);
    return ret;
}

static int32_t velmor_smart_test_share_memory()
{
    LOG(2, "share_memory");
    return velmor_smart_test_sh_test_read();
}

// ---- Timer ----

static void velmor_rbk_delay_timer_cb(union sigval value)
{
    const uint32_t timer_id = static_cast<uint32_t>(value.sival_int);
    LOG(2, "The timer expired with ID %u", timer_id);
    velmor_timer_stop(timer_id);
    g_delay_timer_running.store(0, std::memory_order_relaxed);
}

/* The flag is set after the start: a timer of 0 seconds may have fired by then, and the test never ends. Meant so, it
 * shows that a short timer can be quicker than its caller. */
static int32_t velmor_smart_test_velmor_timer(unsigned long timeout_s)
{
    LOG(2, "Timer test start, timeout_s = %d", static_cast<int32_t>(timeout_s));
    const uint32_t timer_id = velmor_timer_start(velmor_rbk_delay_timer_cb, timeout_s);
    LOG(2, "Start one timer(timer_id %d), will pause until this timer is expired ...", timer_id);
    g_delay_timer_running.store(1, std::memory_order_relaxed);
    for (int32_t count = 1; g_delay_timer_running.load(std::memory_order_relaxed) != 0; ++count) {
        sleep(1);
        if (count == 1)
            LOG(2, "%d second has passed", count);
        else
            LOG(2, "%d seconds have passed", count);
    }
    LOG(2, "Timer test done");
    return 0;
}

// ---- Dead cycle ----

/* Meant never to end: it takes one processor at full load until the process is killed. The count is volatile because a
 * loop without an effect may be removed. */
static void velmor_smart_test_dead_cycle_test_do()
{
    LOG(2, "velmor_smart_test_dead_cycle_test_do start");
    volatile int32_t wait_cnt = 0;
    const int32_t    max = 5;
    while (wait_cnt < max) {
    }
    LOG(4, "Will wait 1s, wait_cnt = %d(max:%d)", wait_cnt, max);
    usleep(1000000);
    wait_cnt = wait_cnt + 1;
    LOG(2, "velmor_smart_test_dead_cycle_test_do end");
}

static int32_t velmor_smart_test_dead_cycle_test()
{
    LOG(2, "velmor_smart_test_dead_cycle_test start");
    velmor_smart_test_dead_cycle_test_do();
    LOG(2, "velmor_smart_test_dead_cycle_test end");
    return 0;
}

// ---- The group ----

void velmor_smart_test_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_SMART) return;
    // clang-format off
    LOG(8, "%d: smart test", RBK_GROUP_SMART);
    LOG(8, "   rbk %d %d                      /* trigger SSR of modem */", RBK_GROUP_SMART, 0);
    LOG(8, "   rbk %d %d                      /* trigger Full Dump */", RBK_GROUP_SMART, 1);
    LOG(8, "   rbk %d %d                      /* trigger NV SYNC */", RBK_GROUP_SMART, 2);
    LOG(8, "   rbk %d %d opt                  /* ap hydra print(need reboot), opt: 0 - off; 1 - on */", RBK_GROUP_SMART, 3);
    LOG(8, "   rbk %d %d opt                  /* bp hydra print, opt: 0 - off; 1 - on */", RBK_GROUP_SMART, 4);
    LOG(8, "   rbk %d %d opt                  /* bp qmi print, opt: 0 - off; 1 - on */", RBK_GROUP_SMART, 5);
    LOG(8, "   rbk %d %d opt                  /* bp rf print, opt: 0 - off; 1 - on */", RBK_GROUP_SMART, 6);
    LOG(8, "   rbk %d %d                      /* share memory test */", RBK_GROUP_SMART, 7);
    LOG(8, "   rbk %d %d timeout_s            /* velmor timer test, timeout_s - the expired time(s) */", RBK_GROUP_SMART, 8);
    LOG(8, "   rbk %d %d timeout_s            /* dead cycle test */", RBK_GROUP_SMART, 9);
    // clang-format on
}

enum {
    SMART_SSR = 0,
    SMART_FULL_DUMP = 1,
    SMART_NV_SYNC = 2,
    SMART_AP_HYDRA = 3,
    SMART_BP_HYDRA = 4,
    SMART_BP_QMI = 5,
    SMART_BP_RF = 6,
    SMART_SHARE_MEMORY = 7,
    SMART_TIMER = 8,
    SMART_DEAD_CYCLE = 9,
};

static bool is_switch(int par_i)
{
    return par_i >= SMART_AP_HYDRA && par_i <= SMART_BP_RF;
}

static void run_sub_command(int par_i, int opt)
{
    switch (par_i) {
    case SMART_SSR: velmor_smart_test_modem_ssr(); break;
    case SMART_FULL_DUMP: velmor_smart_test_full_dump(); break;
    case SMART_NV_SYNC: velmor_smart_test_nv_sync(); break;
    case SMART_AP_HYDRA: velmor_smart_test_ap_hydra_switch(opt); break;
    case SMART_BP_HYDRA: velmor_smart_test_bp_hydra_print_switch(opt); break;
    case SMART_BP_QMI: velmor_smart_test_bp_qmi_print_switch(opt); break;
    case SMART_BP_RF: velmor_smart_test_bp_rf_print_switch(opt); break;
    case SMART_SHARE_MEMORY: velmor_smart_test_share_memory(); break;
    case SMART_TIMER: velmor_smart_test_velmor_timer(static_cast<unsigned long>(opt)); break;
    case SMART_DEAD_CYCLE: velmor_smart_test_dead_cycle_test(); break;
    default: break;
    }
}

int velmor_smart_test_do(int argc, char *argv[])
{
    bool      help_wanted = true;
    const int par_i = argc < 3 ? 0 : atoi(argv[2]);
    const int opt = argc < 4 ? 0 : atoi(argv[3]);
    if (argc < 3) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_SMART) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_SMART);
    } else if (par_i < SMART_SSR || par_i > SMART_DEAD_CYCLE) {
        LOG(1, "invalid par_i = %d", par_i);
    } else if (argc < 4 && (is_switch(par_i) || par_i == SMART_TIMER)) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (is_switch(par_i) && opt != 0 && opt != 1) {
        LOG(1, "note: opt(%d) is invalid:", opt);
    } else {
        run_sub_command(par_i, opt);
        help_wanted = false;
    }
    if (help_wanted) show_help(RBK_GROUP_SMART);
    return 0;
}
