# Group 4: NV items and EFS files by hand.

== An item lives from one run to the next
$ inside rbk 4 2 0 550 1 2 300
4 velmor_extend_nvefs.cpp velmor_nv_write_ex: function entry ------------->
4 ^ velmor_nv_write, sub_id 0, nv_id: 550, buf_len: 3
4 velmor_extend_api.cpp velmor_extend_qmi_client_open: VELMOR_QMI_NV: qmi_client_get_service_list() returned 0 num_services = 1
4 ^ qmi_client_get_service_list, err = 0, num_entries = 1, num_services = 1
4 ^ qmi_client_init, err = 0, handle = N, client_handle = N
4 ^ QMI client inited
4 velmor_extend_api.cpp velmor_extend_qmi_send_sync: velmor_extend_qmi_send_sync resp_len:444
4 ^ velmor_extend_qmi_handle_req_cb result:0
4 velmor_extend_api.cpp velmor_qmi_result_map: velmor_qmi_result_map, old_result 0, new_result 0
4 velmor_extend_nvefs.cpp velmor_nv_write_ex: result = 0, rsp.result = 0
4 ^ function exit <-------------
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002602 00*104 03 00*11 01022C 00*427
$ show modem/nv/0/550
- 01022C
$ inside velmor_extend_nvefs.cpp rbk 4 1 0 550
4 velmor_extend_nvefs.cpp velmor_nv_read: function entry ------------->
4 ^ velmor_nv_read, sub_id 0, nv_id: 550
4 ^ buf_len: 365
4 ^ result = 0, rsp.result = 0
4 ^ rsp.data_len_all = 3
4 ^ function exit <-------------
2 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: data len(3)
  data: 
2 ^  01
2 ^  02
2 ^  2C
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:01002602 00*546
$ inside velmor_extend_nvefs.cpp rbk 4 3 0 550
4 velmor_extend_nvefs.cpp velmor_nv_delete: function entry ------------->
4 ^ velmor_nv_delete, sub_id 0, nv_id: 550
4 ^ result = 0, rsp.result = 0
4 ^ function exit <-------------
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:03002602 00*546
$ show modem/nv/0/550
- absent
$ rbk 4 1 0 550
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-2)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:01002602 00*546

== A file lives from one run to the next, whatever number but 0 names its subscription
$ inside velmor_extend_nvefs.cpp rbk 4 5 7 /test/file 0x10 255 -1
4 velmor_extend_nvefs.cpp velmor_efs_write: function entry ------------->
4 ^ velmor_efs_write, sub_id 1, path_len: 10, buf_len: 3
4 ^ path_value: /test/file
4 ^ left_num(3)
4 ^ send_num(3)
4 ^ result = 0, rsp.result[>=0 is instance id] = 0
4 ^ data_len_all = 3, data_len_send = 3, data_len_recv = 3, send_count = 0, data_len_cur = 0
4 ^ function exit <-------------
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF000A2F746573742F66696C65 00*93 0300000003 00*8 FFFF 00*427
$ show modem/efs/1/test/file
- 00FFFF
$ inside velmor_extend_nvefs.cpp rbk 4 4 1 /test/file
4 velmor_extend_nvefs.cpp velmor_efs_read: function entry ------------->
4 ^ velmor_efs_read, sub_id 1, path_len: 10
4 ^ buf_len: 365
4 ^ path_value: /test/file
4 ^ result = 0, rsp.result = 0
4 ^ data_len_all = 3, data_len_send = 3, data_len_recv = 3, read_count = 0, data_len_cur = 0
4 ^ function exit <-------------
2 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_read: data len(3)
  data: 
2 ^  00
2 ^  FF
@again 1
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040100000A2F746573742F66696C65 00*535
$ inside velmor_extend_nvefs.cpp rbk 4 6 1 /test/file
4 velmor_extend_nvefs.cpp velmor_efs_delete: function entry ------------->
4 ^ velmor_efs_delete, sub_id 1, path_len: 10
4 ^ path_value: /test/file
4 ^ result = 0, rsp.result = 0
4 ^ function exit <-------------
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:060100000A2F746573742F66696C65 00*535
$ show modem/efs/1/test/file
- absent
$ rbk 4 6 1 /test/file
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_delete: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-2)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:060100000A2F746573742F66696C65 00*535

== An item is as long as its words, of which the first 365 are read
$ rbk 4 2 0 551 171*400
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002702 00*104 9001 00*10 AB*365 00*65
$ show modem/nv/0/551
- AB*365 00*35
$ rbk 4 1 0 551
2 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: data len(365)
  data: 
2 ^  AB
@again 364
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:01002702 00*546
$ rbk 4 2 0 551 171*424
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002702 00*104 A801 00*10 AB*365 00*65
$ rbk 4 2 0 551 171*425
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-108)
@help 4

== A file has the words that were read, and is shown up to the buffer
| [efs]
| '0:/long' = { fill = 0x5A, size = 1000 }
$ rbk 4 5 0 /f 171*366
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF00022F66 00*101 6D0100006D01000000000000 AB*365 00*65
$ show modem/efs/0/f
- AB*365
$ rbk 4 4 0 /long
2 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_read: data len(365)
  data: 
2 ^  5A
@again 364
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:04000000052F6C6F6E67 00*540

== Items and paths up to their limits
$ rbk 4 2 1 7232 5
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0201401C 00*104 01 00*11 05 00*429
$ show modem/nv/1/7232
- 05
$ rbk 4 3 0 7233
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_delete: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-109)
@help 4
$ rbk 4 1 0 -1
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-109)
@help 4
$ rbk 4 6 0 ''
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_delete: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-106)
@help 4
$ rbk 4 5 0 /23456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456789 1
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF00632F32333435363738393031323334353637383930313233343536373839303132333435363738393031323334353637383930313233343536373839303132333435363738393031323334353637383930313233343536373839303132333435363738390000000001000000010000000000000001 00*429
$ rbk 4 5 0 /234567890123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890 1
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-106)
@help 4
$ rbk 4 4 0 /234567890123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890
2 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_read: data len(1)
  data: 
2 ^  01
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:04000000642F3233343536373839303132333435363738393031323334353637383930313233343536373839303132333435363738393031323334353637383930313233343536373839303132333435363738393031323334353637383930313233343536373839 00*446

== What the modem refuses is told of each operation
| [[fault]]
| service = 'extended'
| action = 'result'
| code = -28
$ rbk 4 1 0 550
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-28)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:01002602 00*546
$ rbk 4 2 0 550 1
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-28)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002602 00*104 01 00*11 01 00*429
$ rbk 4 3 0 550
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_delete: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-28)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:03002602 00*546
$ rbk 4 4 0 /f
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-28)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:04000000022F66 00*543
$ rbk 4 5 0 /f 1
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-28)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF00022F66 00*101 01000000010000000000000001 00*429
$ rbk 4 6 0 /f
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_delete: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-28)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:06000000022F66 00*543

== The service's error
| [[fault]]
| service = 'extended'
| action = 'error'
| code = 52
$ rbk 4 2 0 550 1
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 52 QMI service framework error. Check client
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-103)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002602 00*104 01 00*11 01 00*429
$ show modem/nv/0/550
- 083A45678901234567

== Silence
| [[fault]]
| service = 'extended'
| action = 'silent'
env RBK_QMI_TIMEOUT_SCALE=0.01
$ rbk 4 2 0 550 1
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: send msg sync failed:-3
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-103)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002602 00*104 01 00*11 01 00*429

== A service that goes
| [[fault]]
| service = 'extended'
| action = 'down'
$ rbk 4 2 0 550 1
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: send msg sync failed:-2
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-103)
@help 4
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:02002602 00*104 01 00*11 01 00*429

== A service that isn't there
| [modem]
| services = []
$ inside velmor_extend_api.cpp rbk 4 2 0 550 1
4 velmor_extend_api.cpp velmor_extend_qmi_client_open: VELMOR_QMI_NV: qmi_client_get_service_list() returned -2 num_services = 0
@again 49
4 ^ qmi_client_get_service_list, err = -2, num_entries = 0, num_services = 0
4 ^ qmi_client_init, err = -2, handle = N, client_handle = 0
1 ^ -2 QMI client init failed
4 velmor_extend_api.cpp velmor_extend_qmi_send_sync: velmor_extend_qmi_handle_req_cb result:-2
4 velmor_extend_api.cpp velmor_qmi_result_map: velmor_qmi_result_map, old_result -2, new_result -102
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(-102)
@help 4

== Refusals reach nobody
$ rbk 4
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Too few parameters, Pls refer to the following cmd:
@help 4
$ rbk 4 7
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 4
$ rbk 4 word
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 4
$ rbk 4 -1
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 4
$ rbk 4 1 0
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: note: need 5 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(268431370)
@help 4
$ rbk 4 1 0 550 1
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_read: note: need 5 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(268431370)
@help 4
$ rbk 4 2 0 550
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_write: note: Too few inputs, Pls refer to the following cmd:
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(268431370)
@help 4
$ rbk 4 3 0 550 1
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_nv_delete: note: need 5 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(268431370)
@help 4
$ rbk 4 4 0
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_read: note: need 5 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(268431370)
@help 4
$ rbk 4 5 0 /f
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_write: note: Too few inputs, Pls refer to the following cmd:
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(268431370)
@help 4
$ rbk 4 6 0
1 velmor_rbk_test_nvefs.cpp velmor_nvefs_test_efs_delete: note: need 5 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_nvefs.cpp velmor_test_nvefs_do: note: Error happen! error_code(268431370)
@help 4
