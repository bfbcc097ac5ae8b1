# Group 9: figures of the modem's statistics. The samples' bytes all differ, so that figures that change places show.

== Each figure stands as the modem sent it
| [stats.sub0]
| 82 = 'F1 F2 3A070000 0B01 F3 0D02 0000803F0000A03F0000C03F0000E03F 00000040000010400000204000003040 00004040000050400000604000007040 00008040000088400000904000009840'
| 103 = { earfcn = 1, pci = 11 }
| 104 = { earfcn = 2, pci = 12 }
| 105 = { earfcn = 3, pci = 13 }
| 106 = { earfcn = 4, pci = 14 }
| 107 = { earfcn = 5, pci = 15 }
| 108 = { earfcn = 2147483647, pci = 65535 }
| 110 = 'F1 00008FC2 008092C2'
| 111 = 'F1 000095C2 008098C2'
| 100 = 'F1 04 0201 0403 05 06'
| 44 = '01 09000000'
| 98 = 'F1 E7FF F2 F3F4 F5F6'
| [stats.sub1]
| 82 = { earfcn = 3050, pci = 21 }
| 94 = 'F1F2F3F4 000080BF 000000C0 000040C0 000080C0'
| 112 = 'F1F2F3F4 0000803F 00000040 00004040 00008040'
| 113 = 'F1F2F3F4 01 02 03 04 05 06 07 08 09 0A 0B FF'
| 135 = 'F1F2F3F4 000080BF 000010C0 000048C0 F62880C0 0000B0C0'
| 6 = 'F1F2F3F4 0000E0C0 000010C0 000048C0 F62880C0 0000B0C0'
| 7 = 'F1F2F3F4 000000C1 000010C0 000048C0 F62880C0 0000B0C0'
| 44 = '01 0C000000'
| 90 = 'F1F2F3F4 66665EC1 00004041 00002041 00008841 0000B841 0000B041 0000A841 0000C041 0000CA42 0000CC42 0000CE42 0000D042'
$ inside rbk 9 0 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 0, sub = 0
4 modem_hydra_mgr.cpp modem_hydra_api_init_ex: old g_hydra_client_id = -1
4 modem_hydra_api.cpp modem_api_check_white_list: check pass, p_id: N, p_name: rbk
4 vs_client.cpp vs_client_init: Client connecting to QMI FW
4 modem_hydra_api.cpp modem_api_operational_status_cb: client type 0, client id 0, operational_status 1
4 vs_client.cpp vs_client_init: using port 65535
4 ^ Trying qmi_client_init_instance() try # 0 port[65535]
4 ^ qmi_client_init_instance returned (0)
4 modem_hydra_api.cpp modem_api_operational_status_cb: client type 0, client id 0, operational_status 3
4 modem_hydra_mgr.cpp modem_hydra_operational_status_cb: do nothing, event_id = 65538, client_type = 0
4 modem_hydra_api.cpp modem_api_init_client: new client: type 0, id 0
4 modem_hydra_mgr.cpp modem_hydra_api_init_ex: new g_hydra_client_id = 0
4 modem_hydra_mgr.cpp modem_hydra_api_is_inited: g_hydra_client_id = 0
@again 1
4 modem_hydra_api.cpp modem_api_set_hydra_feature_status: result 0
4 modem_hydra_mgr.cpp modem_hydra_set_feature_status: ret = 0
4 modem_hydra_mgr.cpp modem_hydra_lte_srv_meas_info_get: function entry ------------->
4 ^ sub = 0, id = 82, ptr_hydra_data = 0xN
4 modem_hydra_mgr.cpp modem_hydra_api_is_inited: g_hydra_client_id = 0
@again 1
4 modem_hydra_api.cpp modem_api_get_stats_parameter: client_id = 0, sub = 0, slot = 1
4 ^ ids[0] = 82, value_len = 0, type = 0, value:  00 00 00 00 00 00 00 00 00
4 modem_hydra_mgr.cpp modem_hydra_data_get: Success to get data, number = 1, sub = 0, ret id_num = 1, id = 82, data_len = 75
4 modem_hydra_mgr.cpp modem_hydra_lte_srv_meas_info_get: function exit, ret = 1 <-------------
8 ASDIV DATA: earfcn: 1850, pci: 267, rx_valid: 525, rsrp_rx0: 1.00, rsrq_rx0: 1.25, rssi_rx0: 1.50, snr_rx0: 1.75, rsrp_rx1: 2.00, rsrq_rx1: 2.25, rssi_rx1: 2.50, snr_rx1: 2.75, rsrp_rx2: 3.00, rsrq_rx2: 3.25, rssi_rx2: 3.50, snr_rx2: 3.75, rsrp_rx3: 4.00, rsrq_rx3: 4.25, rssi_rx3: 4.50, snr_rx3: 4.75
4 modem_hydra_mgr.cpp modem_hydra_api_deinit: g_hydra_client_id = 0
4 modem_hydra_api.cpp modem_api_operational_status_cb: client type 0, client id 0, operational_status 0
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000520000000000
$ show modem/vs/feature_2
- 010101
$ rbk 9 0 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 0, sub = 1
8 ASDIV DATA: earfcn: 3050, pci: 21, rx_valid: 0, rsrp_rx0: 0.00, rsrq_rx0: 0.00, rssi_rx0: 0.00, snr_rx0: 0.00, rsrp_rx1: 0.00, rsrq_rx1: 0.00, rssi_rx1: 0.00, snr_rx1: 0.00, rsrp_rx2: 0.00, rsrq_rx2: 0.00, rssi_rx2: 0.00, snr_rx2: 0.00, rsrp_rx3: 0.00, rsrq_rx3: 0.00, rssi_rx3: 0.00, snr_rx3: 0.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:0100000000520000000000
$ rbk 9 1 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 1, sub = 0
8 ASDIV DATA: earfcn: 1, pci: 11, rx_valid: 0, rsrp_rx0: 0.00, rsrq_rx0: 0.00, rssi_rx0: 0.00, snr_rx0: 0.00, rsrp_rx1: 0.00, rsrq_rx1: 0.00, rssi_rx1: 0.00, snr_rx1: 0.00, rsrp_rx2: 0.00, rsrq_rx2: 0.00, rssi_rx2: 0.00, snr_rx2: 0.00, rsrp_rx3: 0.00, rsrq_rx3: 0.00, rssi_rx3: 0.00, snr_rx3: 0.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000670000000000
$ rbk 9 2 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 2, sub = 0
8 ASDIV DATA: earfcn: 2, pci: 12, rx_valid: 0, rsrp_rx0: 0.00, rsrq_rx0: 0.00, rssi_rx0: 0.00, snr_rx0: 0.00, rsrp_rx1: 0.00, rsrq_rx1: 0.00, rssi_rx1: 0.00, snr_rx1: 0.00, rsrp_rx2: 0.00, rsrq_rx2: 0.00, rssi_rx2: 0.00, snr_rx2: 0.00, rsrp_rx3: 0.00, rsrq_rx3: 0.00, rssi_rx3: 0.00, snr_rx3: 0.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000680000000000
$ rbk 9 3 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 3, sub = 0
8 ASDIV DATA: earfcn: 3, pci: 13, rx_valid: 0, rsrp_rx0: 0.00, rsrq_rx0: 0.00, rssi_rx0: 0.00, snr_rx0: 0.00, rsrp_rx1: 0.00, rsrq_rx1: 0.00, rssi_rx1: 0.00, snr_rx1: 0.00, rsrp_rx2: 0.00, rsrq_rx2: 0.00, rssi_rx2: 0.00, snr_rx2: 0.00, rsrp_rx3: 0.00, rsrq_rx3: 0.00, rssi_rx3: 0.00, snr_rx3: 0.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000690000000000
$ rbk 9 4 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 4, sub = 0
8 ASDIV DATA: earfcn: 4, pci: 14, rx_valid: 0, rsrp_rx0: 0.00, rsrq_rx0: 0.00, rssi_rx0: 0.00, snr_rx0: 0.00, rsrp_rx1: 0.00, rsrq_rx1: 0.00, rssi_rx1: 0.00, snr_rx1: 0.00, rsrp_rx2: 0.00, rsrq_rx2: 0.00, rssi_rx2: 0.00, snr_rx2: 0.00, rsrp_rx3: 0.00, rsrq_rx3: 0.00, rssi_rx3: 0.00, snr_rx3: 0.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006A0000000000
$ rbk 9 5 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 5, sub = 0
8 ASDIV DATA: earfcn: 5, pci: 15, rx_valid: 0, rsrp_rx0: 0.00, rsrq_rx0: 0.00, rssi_rx0: 0.00, snr_rx0: 0.00, rsrp_rx1: 0.00, rsrq_rx1: 0.00, rssi_rx1: 0.00, snr_rx1: 0.00, rsrp_rx2: 0.00, rsrq_rx2: 0.00, rssi_rx2: 0.00, snr_rx2: 0.00, rsrp_rx3: 0.00, rsrq_rx3: 0.00, rssi_rx3: 0.00, snr_rx3: 0.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006B0000000000
$ rbk 9 6 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 6, sub = 0
8 ASDIV DATA: earfcn: 2147483647, pci: 65535, rx_valid: 0, rsrp_rx0: 0.00, rsrq_rx0: 0.00, rssi_rx0: 0.00, snr_rx0: 0.00, rsrp_rx1: 0.00, rsrq_rx1: 0.00, rssi_rx1: 0.00, snr_rx1: 0.00, rsrp_rx2: 0.00, rsrq_rx2: 0.00, rssi_rx2: 0.00, snr_rx2: 0.00, rsrp_rx3: 0.00, rsrq_rx3: 0.00, rssi_rx3: 0.00, snr_rx3: 0.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006C0000000000
$ rbk 9 7 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 7, sub = 1
8 ASDIV DATA: rssi_rx0: -1.00, rssi_rx1: -2.00, rssi_rx2: -3.00, rssi_rx3: -4.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:01000000005E0000000000
$ rbk 9 8 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 8, sub = 1
8 ASDIV DATA: snr_rx0: 1.00, snr_rx1: 2.00, snr_rx2: 3.00, snr_rx3: 4.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:0100000000700000000000
$ rbk 9 9 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 9, sub = 1
8 ASDIV DATA: ant_rx_0_old = 1, ant_rx_0_new = 2, ant_rx_1_old = 3, ant_rx_1_new = 4, ant_rx_2_old = 5, ant_rx_2_new = 6, ant_rx_3_old = 7, ant_rx_3_new = 8, ant_tx_0_old = 9, ant_tx_0_new = 10, ant_tx_1_old = 11, ant_tx_1_new = 255
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:0100000000710000000000
$ rbk 9 10 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 10, sub = 1
8 ASDIV DATA: rsrp_rx0: -1.00, rsrp_rx1: -2.25, rsrp_rx2: -3.12, rsrp_rx3: -4.01, rsrq: -5.50
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:0100000000870000000000
$ rbk 9 11 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 11, sub = 1
8 ASDIV DATA: rsrp_rx0: -7.00, rsrp_rx1: -2.25, rsrp_rx2: -3.12, rsrp_rx3: -4.01, rsrq: -5.50
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:0100000000060000000000
$ rbk 9 12 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 12, sub = 1
8 ASDIV DATA: rsrp_rx0: -8.00, rsrp_rx1: -2.25, rsrp_rx2: -3.12, rsrp_rx3: -4.01, rsrq: -5.50
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:0100000000070000000000
$ rbk 9 20 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 20, sub = 0
8 ASDIV DATA: rx_agc_0: -71.50, rx_agc_1: -73.25
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006E0000000000
$ rbk 9 21 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 21, sub = 0
8 ASDIV DATA: rx_prx: -74.50, rx_drx: -76.25
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006F0000000000
$ rbk 9 30 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 30, sub = 1
8 ANT INFO: ant_num: 4, ant_path: 258, sig_path: 772, old_config: 5, new_config: 6
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000640000000000
$ rbk 9 31 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 0
8 TX INFO: tx_power = -25
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0000 02:0200 03:0100000000620000000000
$ rbk 9 31 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 1
8 TX INFO: tx_power = -13
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0200 03:01000000005A0000000000
$ rbk 9 31 2
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 2
8 TX INFO: tx_power = -25
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0000 02:0200 03:0100000000620000000000
$ inside modem_hydra_mgr.cpp rbk 9 31 7
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 7
4 modem_hydra_mgr.cpp modem_hydra_api_init_ex: old g_hydra_client_id = -1
4 modem_hydra_mgr.cpp modem_hydra_operational_status_cb: do nothing, event_id = 65538, client_type = 0
4 modem_hydra_mgr.cpp modem_hydra_api_init_ex: new g_hydra_client_id = 0
4 modem_hydra_mgr.cpp modem_hydra_api_is_inited: g_hydra_client_id = 0
@again 1
4 modem_hydra_mgr.cpp modem_hydra_set_feature_status: ret = 0
4 modem_hydra_mgr.cpp modem_sys_mode_get: function entry ------------->
4 ^ sub = 0
4 modem_hydra_mgr.cpp modem_hydra_api_is_inited: g_hydra_client_id = 0
@again 1
4 modem_hydra_mgr.cpp modem_hydra_data_get: Success to get data, number = 1, sub = 0, ret id_num = 1, id = 44, data_len = 5
4 modem_hydra_mgr.cpp modem_sys_mode_get: function exit, rat = 9 <-------------
4 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: sub = 0, rat = 9
4 modem_hydra_mgr.cpp modem_hydra_lte_pusch_power_info_get: function entry ------------->
4 ^ sub = 0, ptr_hydra_data = 0xN
4 modem_hydra_mgr.cpp modem_hydra_api_is_inited: g_hydra_client_id = 0
@again 1
4 modem_hydra_mgr.cpp modem_hydra_data_get: Success to get data, number = 2, sub = 0, ret id_num = 1, id = 98, data_len = 8
4 modem_hydra_mgr.cpp modem_hydra_lte_pusch_power_info_get: function exit, ret = 1 <-------------
4 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: function exit, tx_power = -25 <-------------
4 modem_hydra_mgr.cpp modem_sys_mode_get: function entry ------------->
4 ^ sub = 1
4 modem_hydra_mgr.cpp modem_hydra_api_is_inited: g_hydra_client_id = 0
@again 1
4 modem_hydra_mgr.cpp modem_hydra_data_get: Success to get data, number = 3, sub = 1, ret id_num = 1, id = 44, data_len = 5
4 modem_hydra_mgr.cpp modem_sys_mode_get: function exit, rat = 12 <-------------
4 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: sub = 1, rat = 12
4 modem_hydra_mgr.cpp modem_hydra_nr5g_mac_ul_phy_ch_power_info_get: function entry ------------->
4 ^ sub = 1, ptr_hydra_data = 0xN
4 modem_hydra_mgr.cpp modem_hydra_api_is_inited: g_hydra_client_id = 0
@again 1
4 modem_hydra_mgr.cpp modem_hydra_data_get: Success to get data, number = 4, sub = 1, ret id_num = 1, id = 90, data_len = 52
4 modem_hydra_mgr.cpp modem_hydra_nr5g_mac_ul_phy_ch_power_info_get: function exit, ret = 1 <-------------
4 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: function exit, tx_power = -13 <-------------
4 modem_hydra_mgr.cpp modem_tx_power_get_for_max_sub: function exit, tx_power0 = -25, tx_power1 = -13, tx_power = -13 <-------------
8 TX INFO: tx_power = -13
4 modem_hydra_mgr.cpp modem_hydra_api_deinit: g_hydra_client_id = 0
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0000 02:0200 03:0100000000620000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0300 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0400 03:01000000005A0000000000
$ rbk-prop set persist.radio.default_data_sub 1
$ rbk 9 31 2
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 2
8 TX INFO: tx_power = -13
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0200 03:01000000005A0000000000

== Odd figures, samples that are too short and modes without a power
| [stats.sub0]
| 112 = 'F1F2F3F4 0000C07F 000080FF 01000000 7927786B'
| 111 = 'F1 0000803F 010203'
| 44 = '01 09000000'
| 98 = 'F1 FB'
| [stats.sub1]
| 44 = '01 0C000000'
| 90 = 'F1F2F3F4 0000BE41 00004041 00002041 00008841 0000B841 0000B041 0000A841 0000C041 0000CA42 0000CC42 0000'
$ rbk 9 8 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 8, sub = 0
8 ASDIV DATA: snr_rx0: nan, snr_rx1: -inf, snr_rx2: 0.00, snr_rx3: 300000007613292870346211328.00
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:0100000000700000000000
$ rbk 9 21 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 21, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_gsm_l1_rx_diversity_metrics_get: g_hydra_data_left(3) is not enough for rx_drx, id(0x6f)
1 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_gsm_rssi: modem_hydra_gsm_l1_rx_diversity_metrics_get failed
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000006F0000000000
$ rbk 9 31 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 0
1 modem_hydra_mgr.cpp modem_hydra_lte_pusch_power_info_get: g_hydra_data_left(1) is not enough for pusch_tx_power, id(0x62)
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: modem_hydra_lte_pusch_power_info_get faile
8 TX INFO: tx_power = 65535
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0000 02:0200 03:0100000000620000000000
$ rbk 9 31 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 1
1 modem_hydra_mgr.cpp modem_hydra_nr5g_mac_ul_phy_ch_power_info_get: g_hydra_data_left(2) is not enough for pathloss, id(0x5a)
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: modem_hydra_nr5g_mac_ul_phy_ch_power_info_get faile
8 TX INFO: tx_power = 65535
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0200 03:01000000005A0000000000

== No stack, and a mode without a power
| [stats.sub0]
| 44 = '00 09000000'
| [stats.sub1]
| 44 = '01 05000000'
$ rbk 9 31 0
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 0
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: rat(-1) is invalid
8 TX INFO: tx_power = 65535
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
$ rbk 9 31 1
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 1
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: rat(5) is invalid
8 TX INFO: tx_power = 65535
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0100 02:0100 03:01000000002C0000000000

== A subscription without a power is weaker than any
| [stats.sub0]
| 44 = '01 0900'
| [stats.sub1]
| 44 = '01 09000000'
| 98 = 'F1 ECFF F2 F3F4 F5F6'
$ rbk 9 31 7
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 7
1 modem_hydra_mgr.cpp modem_sys_mode_get: g_hydra_data_left(2) is not enough for rat, id(0x2c)
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: rat(-1) is invalid
8 TX INFO: tx_power = -20
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0200 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0300 03:0100000000620000000000

== So is the second one
| [stats.sub0]
| 98 = 'F1 ECFF F2 F3F4 F5F6'
| [stats.sub1]
| 44 = '00'
$ rbk 9 31 7
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 7
1 modem_hydra_mgr.cpp modem_tx_power_get_by_sub: rat(-1) is invalid
8 TX INFO: tx_power = -20
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0000 02:0200 03:0100000000620000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0300 03:01000000002C0000000000

== The stronger one may be the first
| [stats.sub0]
| 98 = 'F1 6300 F2 F3F4 F5F6'
$ rbk 9 31 7
2 velmor_rbk_hydra_data.cpp velmor_test_qmi_modem_stats_do: opt = 31, sub = 7
8 TX INFO: tx_power = 99
> 0x00E4 0x0003 30000 ms 01:02000000 02:01 10:01
> 0x00E4 0x0207 30000 ms 01:0000 02:0100 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0000 02:0200 03:0100000000620000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0300 03:01000000002C0000000000
> 0x00E4 0x0207 30000 ms 01:0100 02:0400 03:01000000005A0000000000
