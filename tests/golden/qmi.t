# Group 12: network scans are set off, and nothing of them is shown.

== A scan of each kind
| [nas]
| scan_ms = 50
$ inside rbk 12 0
4 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: function entry ------------->
2 ^ velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = 0
4 velmor_extend_cmn.cpp velmor_send_nas_qmi_req_msg: function entry ------------->
4 ^ velmor_send_nas_qmi_req_msg, msg_id = 33, time_out_ms = 10000, qmi_client_ptr = 0x00000000
4 ^ init qmi_client
4 ^ qmi_svc_client 0xN
4 ^ velmor_qmi_client_recovery, qmi_client_ptr 0xN
4 ^ function exit <-------------
4 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: function exit <-------------
> 0x0003 0x0021 10000 ms
$ inside velmor_rbk_qmi.cpp rbk 12 1 0 1 2
4 velmor_rbk_qmi.cpp velmor_send_nas_perform_incremental_network_scan_req_msg_v01: function entry ------------->
2 ^ velmor_send_nas_perform_incremental_network_scan_req_msg_v01, scan_scope = 0
4 ^ function exit <-------------
> 0x0003 0x0085 10000 ms

== A scan that takes the modem longer than the request waits
| [nas]
| scan_ms = 11000
env RBK_QMI_TIMEOUT_SCALE=0.01
$ rbk 12 0
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = 0
1 ^ qmi_client_send_msg_sync fail, qmi_client_error = -3
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: Error happen! error_code(-3)
@help 12
> 0x0003 0x0021 10000 ms
env RBK_QMI_TIMEOUT_SCALE=
$ rbk 12 1
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_incremental_network_scan_req_msg_v01: velmor_send_nas_perform_incremental_network_scan_req_msg_v01, scan_scope = 0
> 0x0003 0x0085 10000 ms

== A service that goes
| [[fault]]
| service = 'nas'
| action = 'down'
$ rbk 12 0
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = 0
1 ^ qmi_client_send_msg_sync fail, qmi_client_error = -2
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: Error happen! error_code(-2)
@help 12
> 0x0003 0x0021 10000 ms
$ rbk 12 1
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_incremental_network_scan_req_msg_v01: velmor_send_nas_perform_incremental_network_scan_req_msg_v01, scan_scope = 0
1 ^ qmi_client_send_msg_sync fail, qmi_client_error = -2
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: Error happen! error_code(-2)
@help 12
> 0x0003 0x0085 10000 ms

== Rubbish
| [[fault]]
| service = 'nas'
| action = 'raw'
| bytes = 'FF FF'
$ inside velmor_extend_cmn.cpp rbk 12 0
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = 0
4 velmor_extend_cmn.cpp velmor_send_nas_qmi_req_msg: function entry ------------->
4 ^ velmor_send_nas_qmi_req_msg, msg_id = 33, time_out_ms = 10000, qmi_client_ptr = 0x00000000
4 ^ init qmi_client
4 ^ qmi_svc_client 0xN
4 ^ qmi_client_send_msg_sync fail, qmi_client_error = -1
4 ^ velmor_qmi_client_recovery, qmi_client_ptr 0xN
4 ^ function exit <-------------
1 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: qmi_client_send_msg_sync fail, qmi_client_error = -1
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: Error happen! error_code(-1)
@help 12
> 0x0003 0x0021 10000 ms

== The service's error is not looked at: only the transport decides
| [[fault]]
| service = 'nas'
| action = 'error'
| code = 25
$ rbk 12 0
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = 0
> 0x0003 0x0021 10000 ms
$ rbk 12 1
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_incremental_network_scan_req_msg_v01: velmor_send_nas_perform_incremental_network_scan_req_msg_v01, scan_scope = 0
> 0x0003 0x0085 10000 ms

== A service that isn't there
| [modem]
| services = ['sar']
env RBK_QMI_TIMEOUT_SCALE=0.001
$ inside velmor_extend_cmn.cpp rbk 12 0
2 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = 0
4 velmor_extend_cmn.cpp velmor_send_nas_qmi_req_msg: function entry ------------->
4 ^ velmor_send_nas_qmi_req_msg, msg_id = 33, time_out_ms = 10000, qmi_client_ptr = 0x00000000
4 ^ init qmi_client
4 ^ velmor_qmi_client_init instance failed, qmi_client_error = -3
4 ^ qmi_client_ptr is NULL
4 ^ velmor_qmi_client_recovery, qmi_client_ptr (nil)
4 ^ qmi_client_ptr is NULL
4 ^ function exit <-------------
1 velmor_rbk_qmi.cpp velmor_send_nas_perform_network_scan_req_msg_v01: qmi_client_send_msg_sync fail, qmi_client_error = -1
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: Error happen! error_code(-1)
@help 12

== Refusals reach nobody
$ rbk 12
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: Too few parameters, Pls refer to the following cmd:
@help 12
$ rbk 12 2
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 12
$ rbk 12 -1
1 velmor_rbk_qmi.cpp velmor_test_qmi_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 12
