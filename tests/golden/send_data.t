# Group 6: raw envelopes of the extended service.

== Raw bytes go out as typed
$ inside velmor_extend_api.cpp rbk 6 3 0x10 16 255 256
2 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: velmor_qmi req data(qmi_id: 3, len: 4[max: 500]):
2 ^ 0x10 
@again 1
2 ^ 0xFF 
2 ^ 0x00 
4 velmor_extend_api.cpp velmor_extend_qmi_client_open: VELMOR_QMI_NV: qmi_client_get_service_list() returned 0 num_services = 1
4 ^ qmi_client_get_service_list, err = 0, num_entries = 1, num_services = 1
4 ^ qmi_client_init, err = 0, handle = N, client_handle = N
4 ^ QMI client inited
4 velmor_extend_api.cpp velmor_extend_qmi_send_sync: velmor_extend_qmi_send_sync resp_len:0
4 ^ velmor_extend_qmi_handle_req_cb result:0
2 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: qmi_id = 3, result = 0
2 ^ velmor_qmi rsp data(qmi_id: 3, len: 0[max: 500]):
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:03000000 02:04000000 10:1010FF 00*547
$ rbk 6 0 171*600
2 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: velmor_qmi req data(qmi_id: 0, len: 600[max: 500]):
2 ^ 0xAB 
@again 499
2 ^ qmi_id = 0, result = 0
2 ^ velmor_qmi rsp data(qmi_id: 0, len: 0[max: 500]):
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:00000000 02:F4010000 10:AB*500 00*50
$ rbk 6 5 7
2 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: velmor_qmi req data(qmi_id: 5, len: 1[max: 500]):
2 ^ 0x07 
2 ^ qmi_id = 5, result = 0
2 ^ velmor_qmi rsp data(qmi_id: 5, len: 0[max: 500]):
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:05000000 02:01000000 10:07 00*549

== The service's error
| [[fault]]
| service = 'extended'
| action = 'error'
| code = 52
$ rbk 6 3 1
2 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: velmor_qmi req data(qmi_id: 3, len: 1[max: 500]):
2 ^ 0x01 
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 52 QMI service framework error. Check client
2 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: qmi_id = 3, result = -3
1 ^ velmor_extend_qmi_send_sync fail
@help 6
> 0xFFE4 0x0002 3000 ms 01:03000000 02:01000000 10:01 00*549

== Refusals reach nobody
$ rbk 6 4
1 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: note: Too few parameters, Pls refer to the following cmd:
@help 6
$ rbk 6 6 1
1 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: note: the second parameters(qmi_id) should be >= 0 && < 6
@help 6
$ rbk 6 -1 1
1 velmor_rbk_test_cmn.cpp velmor_test_qmi_send_data_do: note: the second parameters(qmi_id) should be >= 0 && < 6
@help 6
