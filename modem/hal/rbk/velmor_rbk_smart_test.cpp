/* Group 11: restarts, dumps and switches. */
#include "velmor_rbk_groups.h"

#include "velmor_utils_cmn.h"

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
