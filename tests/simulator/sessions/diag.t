# Diag: calls that are answered with a code, and packets.

## A rule decides about another request, packet or call
[diag]
response = [ { request = "4B", packets = [ { bytes = "01", after_ms = 1 }, { bytes = "02", after_ms = 2 } ] } ]
[[fault]]
service = "diag"
prefix = "4B 13"
action = "indicate"
also = true
bytes = "09"
[[fault]]
service = "diag"
prefix = "4B 14"
action = "raw"
bytes = "09"
[[fault]]
service = "diag"
prefix = "4B 15"
action = "error"
code = -9
[[fault]]
service = "diag"
prefix = "4B 16"
action = "delay"
ms = 60000
[[fault]]
service = "diag"
call = "dci_send"
action = "error"
code = 5
[[fault]]
service = "diag"
call = "send"
nth = 6
action = "error"
code = 6
> diag send 0 4B12
< diag =0
< diag packet 01
< diag packet 02
> diag send 0 4B13
< diag =0
< diag packet 09
< diag packet 01
< diag packet 02
> diag send 0 4B14
< diag =0
< diag packet 09
> diag send 0 4B15
< diag =-9
> diag send 0 4B16
< diag =0
> diag send 0 4B12
< diag =6
> diag dci_send 0 4B12
< diag =5
~ 2

## A rule's packets come at another time, in another order, or to a DCI client from another processor
[[fault]]
service = "diag"
prefix = "4B"
action = "raw"
ms = 20
bytes = "01"
then = [ { bytes = "03", after_ms = 1 }, { bytes = "02", processor = 1 } ]
[[fault]]
service = "diag"
action = "silent"
then = [ { bytes = "05", after_ms = 1 }, { bytes = "04" } ]
> diag send 0 4B
< diag =0
< diag packet 01
< diag packet 02
< diag packet 03
> diag send 0 7C
< diag =0
< diag packet 04
< diag packet 05
> diag dci_register 1
< diag =1001
> diag dci_send 1 4B
< diag =1001
< diag packet 01
< diag packet 03

## A packet's rule takes another packet
[modem]
restart_ms = 1
[diag]
response = [ { request = "4B", packets = [ { bytes = "01", after_ms = 1 }, { bytes = "02", after_ms = 2 } ] } ]
[[fault]]
service = "diag"
on = "indication"
prefix = "01"
nth = 1
action = "silent"
[[fault]]
service = "diag"
on = "indication"
nth = 4
action = "raw"
bytes = "08"
[[fault]]
service = "diag"
on = "indication"
prefix = "01"
nth = 3
action = "twice"
[[fault]]
service = "diag"
on = "indication"
prefix = "01"
nth = 4
action = "delay"
ms = 20
[[fault]]
service = "diag"
on = "indication"
prefix = "02"
nth = 5
action = "early"
[[fault]]
service = "diag"
on = "indication"
prefix = "02"
nth = 6
action = "down"
> diag send 0 4B
< diag =0
< diag packet 02
> diag send 0 4B
< diag =0
< diag packet 01
< diag packet 08
> diag send 0 4B
< diag =0
< diag packet 01
< diag packet 01
< diag packet 02
> diag send 0 4B
< diag =0
< diag packet 02
< diag packet 01
> diag send 0 4B
< diag =0
< diag packet 02
< diag packet 01
> diag send 0 4B
< diag =0
< diag packet 01
< - diag
< + diag

## A later row answers, or the built-in one stands beside those of the file
[[diag.response]]
request = "4B 12"
packets = [ { bytes = "02", after_ms = 20 }, { bytes = "01" } ]
[[diag.response]]
request = "4B"
packets = [ { fill = 3, size = 16384 }, { bytes = "" } ]
> diag send 0 4B12
< diag =0
< diag packet 01
< diag packet 02
> diag send 0 4B
< diag =0
< diag packet 03*16384
< diag packet
> diag send 0 7C
< diag =0

## A DCI call is for clients that aren't registered
> diag dci_send 1 7C
< diag =-1
> diag dci_stream 1
< diag =-1
> diag dci_signal 1
< diag =-1
> diag dci_release 1
< diag =-1
> diag dci_register 0
< diag =-1
> diag dci_register -1
< diag =-1
> diag dci_register 1
< diag =1001
2> diag dci_send 1 7C
2< diag =-1
> diag dci_send 1 7C
< diag =1001
< diag packet 7C020000 "SIM.1.0"
> diag dci_release 1
< diag =1001
> diag dci_send 1 7C
< diag =-1

## A packet comes for a client that isn't registered any more
[[diag.response]]
request = "4B"
packets = [ { bytes = "B1", after_ms = 500 } ]
[[diag.response]]
request = "4C"
packets = [ { bytes = "C1", after_ms = 500 } ]
> diag dci_register 1
< diag =1001
> diag dci_register 2
< diag =1001
> diag dci_send 1 4B
< diag =1001
> diag dci_release 1
< diag =1001
> diag dci_send 2 4C
< diag =1001
< diag packet C1

## A stream outlives its registration or its library
[[diag.stream]]
kind = "log"
bytes = "10"
every_ms = 60000
> diag dci_register 1
< diag =1001
> diag dci_stream 1
< diag =1001
> diag dci_release 1
< diag =1001
> diag dci_register 1
< diag =1001
> diag dci_stream 1
< diag =1001
> diag lsm_deinit 0
> diag dci_stream 1
< diag =-1
> diag dci_register 1
< diag =1001
> diag dci_stream 1
< diag =1001
# Each has begun anew
~ 3
---
[[diag.stream]]
kind = "event"
bytes = "10"
every_ms = 500
> diag dci_register 1
< diag =1001
> diag dci_stream 1
< diag =1001
> diag dci_release 1
< diag =1001
> diag dci_register 1
< diag =1001
> diag dci_stream 1
< diag =1001
< diag packet 10
# The second alone goes on
~ 1

## Rubbish is taken for a call
> diag raw
> diag raw 80
> diag raw 80*15
> diag raw FF*16
> diag raw 00*7
> diag raw 81*30000
> diag raw 80 C8 h7 w1 @16
> diag raw 82 00 h7 w1 @16
# Also a request of QMI
> diag raw 00 h1 h2 h0
> diag send 0
< diag =0
> diag send 0 7C*16384
< diag =0
< diag packet 7C020000 "SIM.1.0"

## A client registers without end
* 1 16
> diag dci_register %
< diag =1001
*
> diag dci_register 17
< diag =-1
2> diag dci_register 17
2< diag =1001
> diag dci_release 3
< diag =1001
> diag dci_register 17
< diag =1001
