# Group 5, sub-command 0: raw diag commands. Their polls hang on the machine, so the waits don't stand here.

== An answer is shown in both modes; any word but 0 is DCI
env RBK_TEST_CALLS=
env RBK_TEST_DIVISOR=5
| diag.response = [ { request = '4B4B', packets = [ { bytes = '7C 0A FF' } ] } ]
$ rbk 5 0 0 0 30000 0x4b 75
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 0, io_type: 0, wait_time_ms: 30000
- diag cmd:
- 0x4B 0x4B 
2 ^ callback mode with result
- rsp data len(3)
- rsp data: 0x7C 0x0A 0xFF
> diag 4B4B
$ rbk 5 0 2 0 30000 0x4b 331
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 2, io_type: 0, wait_time_ms: 30000
- diag cmd:
- 0x4B 0x4B 
2 ^ dci mode with result
- rsp data len(3)
- rsp data: 0x7C 0x0A 0xFF
> diag 4B4B

== Long answers are shown whole, up to the reply's room
env RBK_TEST_CALLS=
env RBK_TEST_DIVISOR=20
| diag.response = [
|   { request = '01', packets = [ { fill = 0x4B, size = 4096 }, { fill = 0x4C, size = 904 } ] },
|   { request = '02', packets = [ { fill = 0x4B, size = 4096 }, { fill = 0x4C, size = 4096 } ] },
|   { request = '03', packets = [ { fill = 1, size = 4096 }, { fill = 2, size = 8192 } ] },
| ]
$ rbk 5 0 1 0 40000 1
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 1, io_type: 0, wait_time_ms: 40000
- diag cmd:
- 0x01 
2 ^ dci mode with result
- rsp data len(5000)
- rsp data: 0x4B*4096 0x4C*904
> diag 01
$ rbk 5 0 1 0 40000 2
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 1, io_type: 0, wait_time_ms: 40000
- diag cmd:
- 0x02 
2 ^ dci mode with result
- rsp data len(8192)
- rsp data: 0x4B*4096 0x4C*4096
> diag 02
$ rbk 5 0 1 0 40000 3
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 1, io_type: 0, wait_time_ms: 40000
- diag cmd:
- 0x03 
2 ^ dci mode with result
- rsp data len(10240)
- rsp data: 0x01*4096 0x02*6144
> diag 03

== A request without result is sent beside the command, which says so at once
env RBK_TEST_CALLS=
env RBK_TRACE=
$ rbk 5 0 1 1 500 0x7c
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 1, io_type: 1, wait_time_ms: 500
- diag cmd:
- 0x7C 
2 ^ dci mode without result
- done without rsp data
$ rbk 5 0 0 1 60000 0x7c
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 0, io_type: 1, wait_time_ms: 60000
- diag cmd:
- 0x7C 
2 ^ callback mode without result
- done without rsp data

== A refused send shows the help
| fault = [
|   { service = 'diag', call = 'send', action = 'error', code = 1 },
|   { service = 'diag', call = 'dci_send', action = 'error', code = 1012 },
| ]
$ rbk 5 0 0 0 100 0x7C
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 0, io_type: 0, wait_time_ms: 100
- diag cmd:
- 0x7C 
2 ^ callback mode with result
1 ^ velmor_diag_cmd_send fail
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(1)
@help 5
> diag 7C
$ rbk 5 0 1 0 100 0x7C
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 1, io_type: 0, wait_time_ms: 100
- diag cmd:
- 0x7C 
2 ^ dci mode with result
1 ^ velmor_diag_cmd_send fail
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(1)
@help 5
> diag 7C

== Words beyond the buffer aren't cut: the request is refused by its length
$ rbk 5 0 0 0 3000 171*4096 5
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 0, io_type: 0, wait_time_ms: 3000
- diag cmd:
- 0xAB*4096 
2 ^ callback mode with result
1 ^ velmor_diag_cmd_send fail
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(1)
@help 5
$ rbk 5 0 1 0 3000 171*4096 5
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 1, io_type: 0, wait_time_ms: 3000
- diag cmd:
- 0xAB*4096 
2 ^ dci mode with result
1 ^ velmor_diag_cmd_send fail
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(1)
@help 5
$ rbk 5 0 0 1 3000 171*4096 5
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 0, io_type: 1, wait_time_ms: 3000
- diag cmd:
- 0xAB*4096 
2 ^ callback mode without result
1 ^ velmor_diag_cmd_send fail
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(1)
@help 5
$ rbk 5 0 1 1 3000 171*4096 5
2 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: work_mode: 1, io_type: 1, wait_time_ms: 3000
- diag cmd:
- 0xAB*4096 
2 ^ dci mode without result
1 ^ velmor_diag_cmd_send fail
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(1)
@help 5
! usleep 3000000

== Too few words end without the help
$ rbk 5 0 0 0 3000
1 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: note: Too few inputs, Pls refer to the following cmd:
$ rbk 5 word
1 velmor_rbk_test_cmn.cpp velmor_cmn_diag_cmd_send: note: Too few inputs, Pls refer to the following cmd:
