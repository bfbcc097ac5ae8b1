# Group 9 where the modem, the shell's name or the command line don't let it show a figure.

== A modem that refuses is told of each figure
| [[fault]]
| service = 'vs'
| message = 0x0207
| action = 'error'
| code = 94
$ rbk 9 0 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 0, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 0, id = 82
1 modem_hydra_mgr.cpp modem_hydra_lte_srv_meas_info_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_4g_rssi: get hydra data failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000520000000000
$ rbk 9 7 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 7, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 0, id = 94
1 modem_hydra_mgr.cpp modem_hydra_nr5g_ll1_fw_rx_control_agc_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_5g_rssi: modem_hydra_nr5g_ll1_fw_rx_control_agc_get failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000005E0000000000
$ rbk 9 8 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 8, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 0, id = 112
1 modem_hydra_mgr.cpp modem_hydra_nr5g_ll1_fw_serving_ftl_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_5g_snr: modem_hydra_nr5g_ll1_fw_serving_ftl_get failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000700000000000
$ rbk 9 9 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 9, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 0, id = 113
1 modem_hydra_mgr.cpp modem_hydra_nr5g_ml1_antenna_switch_diversity_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_5g_ant_diversity: modem_hydra_nr5g_ml1_antenna_switch_diversity_get failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000710000000000
$ rbk 9 10 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 10, sub = 1
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 1, id = 135
1 modem_hydra_mgr.cpp modem_hydra_nr5g_srv_meas_info_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_5g_rsrp: get hydra data failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:0100000000870000000000
$ rbk 9 20 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 20, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 0, id = 110
1 modem_hydra_mgr.cpp modem_hydra_wcdma_pn_search_edition2_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_wcdma_rssi: modem_hydra_wcdma_pn_search_edition2_get failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006E0000000000
$ rbk 9 21 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 21, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 0, id = 111
1 modem_hydra_mgr.cpp modem_hydra_gsm_l1_rx_diversity_metrics_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_gsm_rssi: modem_hydra_gsm_l1_rx_diversity_metrics_get failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006F0000000000
$ rbk 9 30 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 30, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 0, id = 100
1 modem_hydra_mgr.cpp modem_hydra_mcs_trm_asdiv_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_ant_info: modem_hydra_mcs_trm_asdiv_get failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000640000000000
$ rbk 9 31 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 4, sub = 0, id = 44
1 modem_hydra_mgr.cpp modem_sys_mode_get: modem_hydra_data_get failed
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: rat(-1) is invalid
8 TX INFO: tx_power = 65535
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000

== A refused start doesn't stop the fetch
| [[fault]]
| service = 'vs'
| message = 3
| action = 'error'
| code = 3
$ rbk 9 21 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 21, sub = 0
8 ASDIV DATA: rx_prx: -74.50, rx_drx: -76.25
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006F0000000000

== Silence
| [[fault]]
| service = 'vs'
| action = 'silent'
env RBK_QMI_TIMEOUT_SCALE=0.001
$ rbk 9 21 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 21, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_data_get: Fail to get data fail, number = 1, ret = 11, sub = 0, id = 111
1 modem_hydra_mgr.cpp modem_hydra_gsm_l1_rx_diversity_metrics_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_gsm_rssi: modem_hydra_gsm_l1_rx_diversity_metrics_get failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006F0000000000

== A service that isn't there costs ten attempts for each opening
| [modem]
| services = ['extended']
$ rbk 9 0 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 0, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_api_init_ex: modem_api_init_client failed
1 modem_hydra_mgr.cpp modem_hydra_stats_start: The hydra is not inited, do nothing
1 modem_hydra_mgr.cpp modem_hydra_data_get: The hydra is not inited, will init it
1 modem_hydra_mgr.cpp modem_hydra_api_init_ex: modem_api_init_client failed
1 modem_hydra_mgr.cpp modem_hydra_data_get: The hydra init failed, will do nothing
1 modem_hydra_mgr.cpp modem_hydra_lte_srv_meas_info_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_4g_rssi: get hydra data failed
! sleep 1 x18
$ rbk 9 31 7
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 7
1 modem_hydra_mgr.cpp modem_hydra_api_init_ex: modem_api_init_client failed
1 modem_hydra_mgr.cpp modem_hydra_stats_start: The hydra is not inited, do nothing
1 modem_hydra_mgr.cpp modem_hydra_data_get: The hydra is not inited, will init it
1 modem_hydra_mgr.cpp modem_hydra_api_init_ex: modem_api_init_client failed
1 modem_hydra_mgr.cpp modem_hydra_data_get: The hydra init failed, will do nothing
1 modem_hydra_mgr.cpp modem_sys_mode_get: modem_hydra_data_get failed
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: rat(-1) is invalid
1 modem_hydra_mgr.cpp modem_hydra_data_get: The hydra is not inited, will init it
1 modem_hydra_mgr.cpp modem_hydra_api_init_ex: modem_api_init_client failed
1 modem_hydra_mgr.cpp modem_hydra_data_get: The hydra init failed, will do nothing
1 modem_hydra_mgr.cpp modem_sys_mode_get: modem_hydra_data_get failed
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: rat(-1) is invalid
8 TX INFO: tx_power = 65535
! sleep 1 x27

== A shell under another name has no right
$ kbr 9 20 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 20, sub = 0
1 modem_hydra_api.cpp modem_api_init: check fail, do nothing
1 modem_hydra_api.cpp modem_api_init_client: check fail, do nothing
1 modem_hydra_mgr.cpp modem_hydra_api_init_ex: modem_api_init_client failed
1 modem_hydra_mgr.cpp modem_hydra_stats_start: The hydra is not inited, do nothing
1 modem_hydra_mgr.cpp modem_hydra_data_get: The hydra is not inited, will init it
1 modem_hydra_api.cpp modem_api_init: check fail, do nothing
1 modem_hydra_api.cpp modem_api_init_client: check fail, do nothing
1 modem_hydra_mgr.cpp modem_hydra_api_init_ex: modem_api_init_client failed
1 modem_hydra_mgr.cpp modem_hydra_data_get: The hydra init failed, will do nothing
1 modem_hydra_mgr.cpp modem_hydra_wcdma_pn_search_edition2_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_wcdma_rssi: modem_hydra_wcdma_pn_search_edition2_get failed

== The mask of 11 comes before anything is looked at
$ rbk-prop set persist.vendor.radio.adb_log_shell 0
$ rbk 9 31 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 0
8 TX INFO: tx_power = 13
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0000 02:0200 03:0100000000620000000000
$ rbk 9 0
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: note: Too few parameters, Pls refer to the following cmd:
@help 9

== Refusals
$ rbk 9 0
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: note: Too few parameters, Pls refer to the following cmd:
@help 9
$ rbk 9 13 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 13, sub = 0
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_hdl: velmor_test_qmi_modem_stats_hdl: Unknown opt(13), sub(0)
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
$ rbk 9 -1 x
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = -1, sub = 0
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_hdl: velmor_test_qmi_modem_stats_hdl: Unknown opt(-1), sub(0)
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
$ rbk 9 0 2
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 0, sub = 2
1 modem_hydra_mgr.cpp modem_hydra_data_get: modem_api_get_stats_parameter, sub(2) is invalid
1 modem_hydra_mgr.cpp modem_hydra_lte_srv_meas_info_get: modem_hydra_data_get failed
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_4g_rssi: get hydra data failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
$ rbk 9 31 -1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = -1
8 TX INFO: tx_power = 17
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0000 02:0200 03:0100000000620000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0300 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0400 03:01000000005A0000000000
