# The command line: groups and their help, masks, surroundings, and what group 8 refuses.

== The whole help for nothing and for what is no group
$ rbk
@help 0
$ rbk 0
@help 0
$ rbk 13
@help 0
$ rbk -4
@help 0
$ rbk word
@help 0
$ rbk ''
@help 0

== Groups without an entry are not supported, without help
$ rbk 1
2 velmor_rbk_test_main.cpp main: Not support
$ rbk 1 4 550
2 velmor_rbk_test_main.cpp main: Not support
$ rbk 2 0
2 velmor_rbk_test_main.cpp main: Not support
$ rbk 2x
2 velmor_rbk_test_main.cpp main: Not support

== A closed mask silences the screen and leaves the log
$ rbk-prop set persist.vendor.radio.adb_log_shell 0
$ inside rbk 1
4 velmor_rbk_test_main.cpp main: Not support
$ rbk

== Levels are shown one by one
$ rbk-prop set persist.vendor.radio.adb_log_shell 1
$ rbk 3 1 x
1 velmor_rbk_test_rf.cpp velmor_gpio_test_get: note: Cmd error, should be: rbk 3 1 , Pls refer to the following cmd:
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(268431370)
$ rbk-prop set persist.vendor.radio.adb_log_shell 2
$ rbk 3 1 x
2 velmor_rbk_test_rf.cpp velmor_gpio_test_get: velmor_gpio_test_get
$ rbk-prop set persist.vendor.radio.adb_log_shell 8
$ rbk 3 1 x
@help 3

== The identity is read only where a trace is open
$ rbk-prop set persist.vendor.radio.adb_log_shell 9
$ rbk-prop set persist.vendor.radio.adb_log_velmor 9
$ traced rbk 2
$ rbk-prop unset persist.vendor.radio.adb_log_velmor
$ rbk-prop set persist.vendor.radio.adb_log_shell 4
$ rbk 2
2 velmor_utils_cmn.cpp velmor_get_current_pid_info: function entry ------------->
2 ^ proc_pid_path: /proc/N/cmdline
2 ^ proc_pid_buf: RBK
2 ^ str_pid_name: rbk
2 ^ p_pid_info->p_name: rbk
2 ^ close fp
2 ^ p_id: N, p_name: rbk
2 ^ function exit <-------------
2 velmor_rbk_test_main.cpp velmor_modem_check_odm_white_list: VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: N, p_name: rbk

== A home that is none is told once, and the command goes on
env RBK_HOME=/dev/null
2 velmor_utils_cmn.cpp velmor_get_current_pid_info: function entry ------------->
2 ^ proc_pid_path: /proc/N/cmdline
2 ^ proc_pid_buf: RBK
2 ^ str_pid_name: rbk
2 ^ p_pid_info->p_name: rbk
2 ^ close fp
2 ^ p_id: N, p_name: rbk
2 ^ function exit <-------------
2 velmor_rbk_test_main.cpp velmor_modem_check_odm_white_list: VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: N, p_name: rbk
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 3
E rbk: /dev/null: Not a directory
$ rbk 4 6 0 550
2 velmor_utils_cmn.cpp velmor_get_current_pid_info: function entry ------------->
2 ^ proc_pid_path: /proc/N/cmdline
2 ^ proc_pid_buf: RBK
2 ^ str_pid_name: rbk
2 ^ p_pid_info->p_name: rbk
2 ^ close fp
2 ^ p_id: N, p_name: rbk
2 ^ function exit <-------------
2 velmor_rbk_test_main.cpp velmor_modem_check_odm_white_list: VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: N, p_name: rbk
2 velmor_extend_nvefs.cpp velmor_efs_delete: function entry ------------->
2 ^ velmor_efs_delete, sub_id 0, path_len: 3
2 ^ path_value: 550
2 velmor_extend_api.cpp velmor_extend_qmi_client_open: VELMOR_QMI_NV: qmi_client_get_service_list() returned 0 num_services = 1
2 ^ qmi_client_get_service_list, err = 0, num_entries = 1, num_services = 1
2 ^ qmi_client_init, err = 0, handle = N, client_handle = N
2 ^ QMI client inited
2 velmor_extend_api.cpp velmor_extend_qmi_send_sync: velmor_extend_qmi_send_sync resp_len:444
2 ^ velmor_extend_qmi_handle_req_cb result:0
2 velmor_extend_api.cpp velmor_qmi_result_map: velmor_qmi_result_map, old_result 0, new_result 0
2 velmor_extend_nvefs.cpp velmor_efs_delete: result = 0, rsp.result = -5
2 ^ qmi response fail
2 ^ function exit <-------------
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_delete: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-5)
@help 4
E rbk: /dev/null: Not a directory
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0600000003353530 00*542

== A modem without a path is told, and the command goes on
env RBK_MODEM=unix:
$ rbk 3 2
2 velmor_rbk_test_rf.cpp velmor_gpio_test_closed: velmor_gpio_test_closed
1 velmor_extend_api.cpp velmor_extend_qmi_client_open: -2 QMI client init failed
1 velmor_rbk_test_rf.cpp velmor_gpio_test_closed: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-102)
@help 3
E rbk: RBK_MODEM: expected embedded, unix:PATH or qrtr, not "unix:"

== Refused AT commands send nothing and start no thread
$ rbk 8
1 velmor_rbk_at_cmd.cpp velmor_test_at_cmd_do: note: The number of inputs should be 2, Pls refer to the following cmd:
@help 8
$ rbk 8 AT X
1 velmor_rbk_at_cmd.cpp velmor_test_at_cmd_do: note: The number of inputs should be 2, Pls refer to the following cmd:
@help 8
$ rbk 8 AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA
1 velmor_rbk_at_cmd.cpp velmor_test_at_cmd_do: note: the second parameters length should <= 100, Pls refer to the following cmd:
@help 8

== A command line without a slash is the shell's name
$ traced kbr 2
4 velmor_utils_cmn.cpp velmor_get_current_pid_info: function entry ------------->
4 ^ proc_pid_path: /proc/N/cmdline
4 ^ proc_pid_buf: kbr
4 ^ proc_pid_buf should be name
4 ^ str_pid_name: kbr
4 ^ p_pid_info->p_name: kbr
4 ^ close fp
4 ^ p_id: N, p_name: kbr
4 ^ function exit <-------------
4 velmor_rbk_test_main.cpp velmor_modem_check_odm_white_list: VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: N, p_name: kbr
2 velmor_rbk_test_main.cpp main: Not support
