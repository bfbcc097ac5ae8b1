# The scenarios that come with the programs, each with the commands of its head. Those of cards stand in scenario_cards.t.

== The first request is unanswered, and the second isn't
scenario first-request-unanswered
$ sh rbk-prop set persist.vendor.radio.adb_log_shell 3; timeout 60 rbk-modem --scenario $RBK_SCENARIO --listen unix:s >ready & echo $! >modem; timeout 20 sh -c 'until [ -s ready ]; do sleep 0.01; done'
$ sh RBK_SCENARIO= RBK_MODEM=unix:s RBK_QMI_TIMEOUT_SCALE=0.1 rbk 4 1 0 550
- RIL[velmor_extend_api.cpp:134] velmor_extend_qmi_send_sync: send msg sync failed:-3
- RIL[velmor_rbk_test_nvefs.cpp:64] velmor_nvefs_test_nv_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
- RIL[velmor_rbk_test_nvefs.cpp:166] velmor_test_nvefs_do: note: Error happen! error_code(-103)
$ sh RBK_SCENARIO= RBK_MODEM=unix:s rbk 4 1 0 550 | sed 's/.*: //; 2q'
- data len(9)
- 
$ sh kill $(cat modem); timeout 20 sh -c 'while [ -e s ]; do sleep 0.01; done'

== All of it is unanswered
scenario silent-modem
env RBK_QMI_TIMEOUT_SCALE=0.05
$ rbk 4 1 0 550
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: send msg sync failed:-3
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-103)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:01002602 00*546
$ rbk 12 0
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = 0
1 ^ qmi_client_send_msg_sync fail, qmi_client_error = -3
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: Error happen! error_code(-3)
@help 12
> 0x0003 0x0021 10000 ms
env RBK_QMI_TIMEOUT_SCALE=0.01
$ rbk 9 0 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 0, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 11, sub = 0, id = 82
1 modem_hydra_mgr.cpp modem_hydra_lte_srv_meas_info_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_4g_rssi: get hydra data failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000520000000000

== What is asked early finds nobody, and who waits is answered
scenario slow-boot
env RBK_QMI_TIMEOUT_SCALE=3
$ rbk 5 10 4 0
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01
$ rbk 4 1 0 550
1 velmor_extend_api.cpp velmor_extend_qmi_client_open: -2 QMI client init failed
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-102)
@help 4

== A service is missing, and others aren't
scenario service-missing
$ rbk 5 5
8 JUDGE SAR DSI: -1
8 Modem SAR DSI: -1
$ rbk 5 10 4 0
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01

== Each request is the service's last, and the next command finds it again
scenario crash-loop
$ sh rbk-prop set persist.vendor.radio.adb_log_shell 1; timeout 60 rbk-modem --scenario $RBK_SCENARIO --listen unix:s >ready & echo $! >modem; timeout 20 sh -c 'until [ -s ready ]; do sleep 0.01; done'
$ sh export RBK_SCENARIO= RBK_MODEM=unix:s; rbk 4 1 0 550 | head -n 1; rbk 4 1 0 550 | head -n 1
- RIL[velmor_extend_api.cpp:134] velmor_extend_qmi_send_sync: send msg sync failed:-2
- RIL[velmor_extend_api.cpp:134] velmor_extend_qmi_send_sync: send msg sync failed:-2
$ sh kill $(cat modem); timeout 20 sh -c 'while [ -e s ]; do sleep 0.01; done'

== The whole message is refused
scenario wrong-result-length
$ rbk 4 1 0 550
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: send msg sync failed:-1
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-103)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:01002602 00*546

== A locked item is read alone
scenario nv-item-locked
$ rbk 4 2 0 550 1 2 3
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-13)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002602 00*104 03 00*11 010203 00*427
$ rbk 4 3 0 550
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_delete: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-13)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:03002602 00*546
$ rbk 4 1 0 550
2 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: data len(9)
  data: 
2 ^  08
2 ^  3A
2 ^  45
2 ^  67
2 ^  89
2 ^  01
2 ^  23
2 ^  45
2 ^  67
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:01002602 00*546
$ show modem/nv/0/550
- 083A45678901234567
$ rbk 4 2 1 550 1
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02012602 00*104 01 00*11 01 00*429

== Nothing is written, and all can be read and deleted
scenario efs-full
$ rbk 4 5 0 /nv/item_files/modem/note 1 2 3
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-28)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF00192F6E762F6974656D5F66696C65732F6D6F64656D2F6E6F7465 00*78 030000000300000000000000010203 00*427
$ rbk 4 2 0 550 1 2 3
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-28)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002602 00*104 03 00*11 010203 00*427
$ show modem/efs/0/nv/item_files/modem/note
- absent
$ rbk 4 1 0 550
2 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: data len(9)
  data: 
2 ^  08
2 ^  3A
2 ^  45
2 ^  67
2 ^  89
2 ^  01
2 ^  23
2 ^  45
2 ^  67
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:01002602 00*546
$ rbk 4 3 0 550
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:03002602 00*546

== Figures of missing receivers are zeros
scenario weak-signal
$ rbk 9 0 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 0, sub = 0
8 ASDIV DATA: earfcn: 1850, pci: 7, rx_valid: 3, rsrp_rx0: -124.50, rsrq_rx0: -19.00, rssi_rx0: -98.25, snr_rx0: -6.50, rsrp_rx1: -127.25, rsrq_rx1: -20.50, rssi_rx1: -99.75, snr_rx1: -9.00, rsrp_rx2: 0.00, rsrq_rx2: 0.00, rssi_rx2: 0.00, snr_rx2: 0.00, rsrp_rx3: 0.00, rsrq_rx3: 0.00, rssi_rx3: 0.00, snr_rx3: 0.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000520000000000

== The answer is found among the logs
# Two threads print at once: a line may hold the words of both.
scenario diag-log-flood
$ sh RBK_TEST_DIVISOR=1 rbk 5 0 1 0 3000 0x7C | awk '/ data: 10 00 00/ { ++logs } /rsp data len.4./ { print "rsp data len(4)" } END { print (logs > 10) }'
- rsp data len(4)
- 1

== A scan isn't waited for
scenario scan-too-long
env RBK_QMI_TIMEOUT_SCALE=0.02
$ rbk 12 0
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = 0
1 ^ qmi_client_send_msg_sync fail, qmi_client_error = -3
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: Error happen! error_code(-3)
@help 12
> 0x0003 0x0021 10000 ms

# Whether a timer starts before an outcome is there is open: the waits are left out.
== A configuration that was told as switched isn't: it is lost
scenario config-switch-early
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ inside velmor_mbn_utils.cpp rbk 10 1 1
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 1
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex ret_val 0
4 velmor_mbn_utils.cpp velmor_mbn_deactivate_config: function entry ------------->
4 ^ pdc_deactivate_config_ex, ret_pdc: 0, ret_sync: 0, sub: 0, config_type: 1
4 ^ function exit <-------------
1 pdc_utils.cpp qmi_pdc_select_config_ind_hdlr_ex: QMI error, error code: 25
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_select_config_ex ret_val -1
4 ^ SUB_0 pdc_activate_config_ex ret_val 0
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function exit <-------------
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
> 0x0024 0x002B 10000 ms 01:01000000 11:00000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:01000000146A1F0352904EC7182B33758DA009E45C61D2F710 11:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:00000000 13:00000000
$ show modem/pdc/sub0
$ inside velmor_mbn_utils.cpp rbk 10 1 1
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 1
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex ret_val -6
1 ^ SUB_0 pdc_get_current_config_ex fail
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function exit <-------------
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000

== Without an outcome nothing is switched
scenario config-outcome-missing
env RBK_TEST_CALLS=
$ inside velmor_mbn_utils.cpp rbk 10 1 1
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 1
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex ret_val -1
1 ^ SUB_0 pdc_get_current_config_ex fail
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function exit <-------------
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
$ show modem/pdc/sub0
- active

== Outcomes before their answers are taken
scenario event-before-answer
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ inside velmor_mbn_utils.cpp rbk 10 1 1
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 1
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex ret_val 0
4 velmor_mbn_utils.cpp velmor_mbn_deactivate_config: function entry ------------->
4 ^ pdc_deactivate_config_ex, ret_pdc: 0, ret_sync: 0, sub: 0, config_type: 1
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_select_config_ex ret_val 0
4 ^ SUB_0 pdc_activate_config_ex ret_val 0
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function exit <-------------
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
> 0x0024 0x002B 10000 ms 01:01000000 11:00000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:01000000146A1F0352904EC7182B33758DA009E45C61D2F710 11:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:00000000 13:00000000
$ show modem/pdc/sub0
- active

== Of two outcomes one is taken
scenario event-comes-twice
$ sh RBK_TEST_DIVISOR=1 rbk 10 1 1 >said; grep -o 'SUB_0.*' said; grep -q 'Not find the timer_callback\|NULL pointer for get_sel_holder' said && ls state/modem/pdc/sub0
- SUB_0 pdc_get_current_config_ex ret_val 0
- SUB_0 pdc_select_config_ex ret_val 0
- SUB_0 pdc_activate_config_ex ret_val 0
- active

# Three times the frame that asks for an id of nas. As qmicli sees it: script/test-foreign.
== The third asker gets no client id, and who needs none works beside
scenario client-ids-run-out
$ sh timeout 60 rbk-modem --scenario $RBK_SCENARIO --listen qmux:q --listen unix:s >ready & echo $! >modem; timeout 20 sh -c 'until [ -s ready ]; do sleep 0.01; done'
$ sh exec 3<>q; for _ in 1 2 3; do printf '\1\17\0\0\0\0\0\241\42\0\4\0\1\1\0\3' >&3; done; timeout 20 head -c 67 <&3 | od -An -tx1 -w24
-  01 17 00 80 00 00 01 a1 22 00 0c 00 02 04 00 00 00 00 00 01 02 00 03 01
-  01 17 00 80 00 00 01 a1 22 00 0c 00 02 04 00 00 00 00 00 01 02 00 03 02
-  01 12 00 80 00 00 01 a1 22 00 07 00 02 04 00 01 00 05 00
$ sh RBK_SCENARIO= RBK_MODEM=unix:s rbk 4 1 0 550 | grep -o 'data len.*'
- data len(9)
$ sh kill $(cat modem); timeout 20 sh -c 'while [ -e s ]; do sleep 0.01; done'
