/* Group 3: GPIO and transmit antenna tests of the radio front end. */
#include "velmor_rbk_groups.h"

#include "velmor_utils_cmn.h"

void velmor_test_rf_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_RF) return;
    // clang-format off
    LOG(8, "%d: rf option cmd", RBK_GROUP_RF);
    LOG(8, "   rbk %d %d ...   /* gpio value setting(pls input enough gpio value by notice)*/", RBK_GROUP_RF, 0);
    LOG(8, "                    (need to reboot duing first setting) ");
    LOG(8, "   rbk %d %d       /* get gpio test state */", RBK_GROUP_RF, 1);
    LOG(8, "   rbk %d %d       /* Close gpio test(need to reboot) */", RBK_GROUP_RF, 2);
    LOG(8, "   rbk %d %d v_ant v_sys v_band_list", RBK_GROUP_RF, 3);
    LOG(8, "                 /* fix tx to upper(lower) antenna for given band list */");
    LOG(8, "                    (need to reboot) ");
    LOG(8, "                    v_ant: 0 - lower antenna, 1 - upper antenna ");
    LOG(8, "                    v_sys: 0 - gsm, 1 - wcdma, 2 - cdma, 3 - tds, 4 - lte ");
    LOG(8, "                    v_band_list: bit0~bi43 - (gsm: 850,900,1800,1900; wcdma: b1,b2,b4,b5,b8; ");
    LOG(8, "                                            cdma: bc0, tds: b34,b39; lte: b1...b44 ");
    LOG(8, "                    v_band_list: bit44~bi63 - (only for lte: b28b,b40b,b41b,b41c,b39b,b252,");
    LOG(8, "                                            b255,b253,b254,b66,b46,b250,b47,b48,b71,b71b,b38k ...  ");
    LOG(8, "   rbk %d %d       /* get tx test state */", RBK_GROUP_RF, 4);
    LOG(8, "   rbk %d %d       /* Close tx test(need to reboot) */", RBK_GROUP_RF, 5);
    // clang-format on
}
