/* The command groups: their numbers, their entries and their help. */
#ifndef VELMOR_RBK_GROUPS_H
#define VELMOR_RBK_GROUPS_H

/* First word of the command line. */
enum {
    RBK_GROUP_ALL = 0,  // for the help alone
    RBK_GROUP_NV = 1,
    RBK_GROUP_IMEI = 2,
    RBK_GROUP_RF = 3,
    RBK_GROUP_NVEFS = 4,
    RBK_GROUP_CMN = 5,
    RBK_GROUP_SEND_DATA = 6,
    RBK_GROUP_STATS = 7,  // statistics parsed from a diag packet
    RBK_GROUP_AT = 8,
    RBK_GROUP_STATS_QMI = 9,  // statistics over QMI
    RBK_GROUP_MBN = 10,
    RBK_GROUP_SMART = 11,
    RBK_GROUP_QMI = 12,
};

/* Prints the help between its two banner lines, at level 8: of one group, or of all with RBK_GROUP_ALL. */
void show_help(int group);

/* Entry of a group. Takes the command line as main got it, checks it, runs one sub-command, and prints the group's help
 * when the arguments or the run went wrong. Its result isn't looked at. */
int velmor_test_rf_do(int argc, char *argv[]);
int velmor_test_nvefs_do(int argc, char *argv[]);
int velmor_test_cmn_do(int argc, char *argv[]);
int velmor_test_qmi_send_data_do(int argc, char *argv[]);
int velmor_test_modem_stats_do(int argc, char *argv[]);
int velmor_test_at_cmd_do(int argc, char *argv[]);
int velmor_test_qmi_modem_stats_do(int argc, char *argv[]);
int velmor_smart_test_do(int argc, char *argv[]);
int velmor_test_qmi_do(int argc, char *argv[]);
int velmor_test_mbn_do(int argc, char *argv[]);

/* Help of a group: prints when `group` is RBK_GROUP_ALL or its own. The names of the two statistics groups cross over:
 * velmor_test_modem_stats_show_help belongs to RBK_GROUP_STATS_QMI, and velmor_test_modem_stats_do to RBK_GROUP_STATS. */
void velmor_test_rf_show_help(int group);
void velmor_test_nvefs_show_help(int group);
void velmor_test_cmn_show_help(int group);
void velmor_test_qmi_send_data_show_help(int group);
void velmor_test_qmi_modem_stats_show_help(int group);
void velmor_test_at_cmd_show_help(int group);
void velmor_test_modem_stats_show_help(int group);
void velmor_test_mbn_show_help(int group);
void velmor_smart_test_show_help(int group);
void velmor_test_qmi_show_help(int group);

#endif
