# NV items and EFS files. A request's record: operation, subscription, item (of a write in chunks its instance), length of
# the path and the path; @108 the whole length, the chunk's, the offset; @120 the chunk. An answer's: @4 the whole length,
# the chunk's; @16 the result and the chunk.
# The modem's, which runs in the process that runs the command
: OPEN_FILES ls -l /proc/$PPID/fd 2> /dev/null | grep -c efs/0/f

## Items of two subscriptions are one, or a file that was put in by hand isn't read
> extended 2 env 0: 01
< extended r2 env 0: 01
> extended 2 env 2: 01 01 h7232
< extended r2 env 0: @16 w-2 @444
> extended 2 env 2: 02 01 h7232 @108 w424 @120 A1 11*422 B2
< extended r2 env 0: @444
= nv/1/7232 A1 11*422 B2
> extended 2 env 2: 01 01 h7232
< extended r2 env 0: @4 w424 @20 A1 11*422 B2
> extended 2 env 2: 01 00 h7232
< extended r2 env 0: @16 w-2 @444
$ printf put > nv/1/7232
> extended 2 env 2: 01 01 h7232
< extended r2 env 0: @4 w3 @20 "put" @444
> extended 2 env 2: 03 01 h7232
< extended r2 env 0: @444
> extended 2 env 2: 03 01 h7232
< extended r2 env 0: @16 w-2 @444

## A long item is written past its record, or its length is cut with it
$ printf '%01000d' 0 > nv/0/77
> extended 2 env 2: 01 00 h77
< extended r2 env 0: @4 w1000 @20 30*424
> extended 2 env 1: w1 w77 w0 @428
< extended r2 env 0: @16 w1000 30*412
> extended 2 env 1: w2 w77 w0 @428
< extended r2 env 0: @4 w-22 @432
> extended 2 env 1: w1 w7233 w0 @428
< extended r2 env 0: @4 w-22 @432

## What a request leaves out is read from an earlier one
[nv]
"0/0" = "A1 B2"
> extended 2 env 2: 02 00 h1 @108 w424 @120 11*424
< extended r2 env 0: @444
> extended 2 env 2: 01
< extended r2 env 0: @4 w2 @20 A1B2 @444
> extended 2 env 2: 02 00 h2 @108 w4 @120 55
< extended r2 env 0: @444
= nv/0/2 55000000

## A request that makes no sense is carried out, or leaves the tree
[efs]
"0:/file" = "A1"
"0:/folder/inside" = "B2"
"0:/long" = { fill = 7, size = 500 }
$ ln -s ../../nv efs/0/way_out && ln -s ../../nv/0/550 efs/0/link_out
# Operations 0 and 7
> extended 2 env 2: 00
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 07
< extended r2 env 0: @16 w-22 @444
# Items: a third subscription, one past the last, of no bytes, beyond the record
> extended 2 env 2: 01 02 h551
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 01 00 h7233
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 02 00 h1
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 02 00 h1 @108 w425
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 03 02 h1
< extended r2 env 0: @16 w-22 @444
# Paths: a third subscription, none, the root alone, beyond its room, a folder's, upwards
> extended 2 env 2: 04 02 h0 05 "/file"
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 04 00 h0 00
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 04 00 h0 04 "//./"
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 04 00 h0 68 "/file" @109
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 04 00 h0 06 "/file/"
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 04 00 h0 0F "/folder/../file"
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h255 0D "/../../nv/0/1" @108 w1 w1 @120 A1
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 06 00 h0 0F "../../nv/0/0550"
< extended r2 env 0: @16 w-22 @444
# Links
> extended 2 env 2: 04 00 h0 0E "/way_out/0/550"
< extended r2 env 0: @16 w-20 @444
> extended 2 env 2: 04 00 h0 09 "/link_out"
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h255 0E "/way_out/0/new" @108 w1 w1 @120 A1
< extended r2 env 0: @16 w-20 @444
# Missing ones; files and folders taken for each other
> extended 2 env 2: 04 00 h0 08 "/missing"
< extended r2 env 0: @16 w-2 @444
> extended 2 env 2: 04 00 h0 0D "/missing/file"
< extended r2 env 0: @16 w-2 @444
> extended 2 env 2: 04 00 h0 07 "/folder"
< extended r2 env 0: @16 w-21 @444
> extended 2 env 2: 04 00 h0 0C "/file/inside"
< extended r2 env 0: @16 w-20 @444
> extended 2 env 2: 05 00 h255 07 "/folder" @108 w1 w1 @120 A1
< extended r2 env 0: @16 w-21 @444
> extended 2 env 2: 05 00 h255 09 "/file/new" @108 w1 w1 @120 A1
< extended r2 env 0: @16 w-20 @444
> extended 2 env 2: 06 00 h0 07 "/folder"
< extended r2 env 0: @16 w-21 @444
> extended 2 env 2: 06 00 h0 0C "/file/inside"
< extended r2 env 0: @16 w-20 @444
# Writes: of nothing, an empty chunk, one beyond the record and one beyond the file, a file too long, an instance that
# there isn't, a first chunk in the middle
> extended 2 env 2: 05 00 h255 04 "/new" @108 w0 w0
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h255 04 "/new" @108 w5 w0
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h255 04 "/new" @108 w500 w425
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h255 04 "/new" @108 w5 w6
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h255 04 "/new" @108 w102411 w414
< extended r2 env 0: @16 w-28 @444
> extended 2 env 2: 05 00 h3 04 "/new" @108 w500 w100 w400
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h255 04 "/new" @108 w500 w100 w400
< extended r2 env 0: @16 w-22 @444
= efs/0/new none
= nv/0/1 none
= nv/0/new none
# A path ends at its zero; a read from behind the end
> extended 2 env 2: 04 00 h0 09 "/file" 00 "/.."
< extended r2 env 0: @4 w1 w1 @20 A1 @444
> extended 2 env 2: 04 00 h0 05 "/long" @116 w-1
< extended r2 env 0: @4 w500 @444

## A file stands there before its last chunk, or another spelling of its path is another file
> extended 2 env 2: 05 00 h255 06 "/d/new" @108 w600 w400 @120 A1 11*399
< extended r2 env 0: @444
= efs/0/d none
> extended 2 env 2: 05 00 h0 06 "/d/new" @108 w600 w200 w400 @120 11*199 B2
< extended r2 env 0: @444
= efs/0/d/new A1 11*598 B2
> extended 2 env 2: 04 00 h0 08 "d//./new"
< extended r2 env 0: @4 w600 w424 @20 A1 11*423
> extended 2 env 2: 04 00 h0 06 "/d/new" @116 w424
< extended r2 env 0: @4 w600 w176 @20 11*175 B2 @444
> extended 2 env 2: 06 00 h0 06 "/d/new"
< extended r2 env 0: @444
> extended 2 env 2: 06 00 h0 06 "/d/new"
< extended r2 env 0: @16 w-2 @444

## Writes of two clients mix
> extended 2 env 2: 05 00 h255 05 "/same" @108 w600 w400 @120 11*400
< extended r2 env 0: @444
2> extended 2 env 2: 05 00 h255 05 "/same" @108 w600 w400 @120 22*400
2< extended r2 env 0: @444
> extended 2 env 2: 05 00 h0 05 "/same" @108 w600 w200 w400 @120 11*200
< extended r2 env 0: @444
= efs/0/same 11*600
2> extended 2 env 2: 05 00 h0 05 "/same" @108 w600 w200 w400 @120 22*200
2< extended r2 env 0: @444
= efs/0/same 22*600

## A chunk that doesn't fit its transfer changes it
> extended 2 env 2: 05 00 h255 05 "/file" @108 w500 w400 @120 11*400
< extended r2 env 0: @444
# Another path, spelling, subscription, whole length, offset; more than is left
> extended 2 env 2: 05 00 h0 06 "/other" @108 w500 w100 w400 @120 22*100
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h0 06 "//file" @108 w500 w100 w400 @120 22*100
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 01 h0 05 "/file" @108 w500 w100 w400 @120 22*100
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h0 05 "/file" @108 w501 w100 w400 @120 22*100
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h0 05 "/file" @108 w500 w100 w300 @120 22*100
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h0 05 "/file" @108 w500 w101 w400 @120 22*101
< extended r2 env 0: @16 w-22 @444
> extended 2 env 2: 05 00 h0 05 "/file" @108 w500 w100 w400 @120 33*100
< extended r2 env 0: @444
= efs/0/file 11*400 33*100

## A read goes on in a file that has been replaced, or begins anew in the old one
$ printf '%0600d' 0 > efs/0/file
> extended 2 env 2: 04 00 h0 05 "/file"
< extended r2 env 0: @4 w600 w424 @20 30*424
2> extended 2 env 2: 04 00 h0 05 "/file"
2< extended r2 env 0: @4 w600 w424 @20 30*424
$ printf '%0700d' 0 | tr 0 1 > tmp/new && mv tmp/new efs/0/file
> extended 2 env 2: 04 00 h0 05 "/file"
< extended r2 env 0: @4 w700 w424 @20 31*424
2> extended 2 env 2: 04 00 h0 05 "/file" @116 w424
2< extended r2 env 0: @4 w600 w176 @20 30*176 @444

## A client opens writes without end, or goes on with one of another client
* 0 7
> extended 2 env 2: 05 00 h255 05 "/file" @108 w102410 w100 @120 11*100
< extended r2 env 0: @16 w% @444
*
> extended 2 env 2: 05 00 h255 05 "/file" @108 w102410 w100 @120 11*100
< extended r2 env 0: @16 w-24 @444
2> extended 2 env 2: 05 00 h255 05 "/file" @108 w500 w100 @120 22*100
2< extended r2 env 0: @444
2> extended 2 env 2: 05 00 h1 05 "/file" @108 w102410 w100 w100 @120 22*100
2< extended r2 env 0: @16 w-22 @444
# The longest file
* 1 1023
> extended 2 env 2: 05 00 h5 05 "/file" @108 w102410 w100 w%00 @120 11*100
< extended r2 env 0: @16 w5 @444
*
= efs/0/file none
> extended 2 env 2: 05 00 h5 05 "/file" @108 w102410 w10 w102400 @120 33*10
< extended r2 env 0: @16 w5 @444
= efs/0/file 11*102400 33*10
> extended 2 env 2: 05 00 h255 05 "/file" @108 w102410 w100 @120 11*100
< extended r2 env 0: @16 w5 @444

## Clients keep files open without end, or after their own
$ for i in 0 1 2 3 4 5 6 7 8; do printf "%0600d" $i > efs/0/f$i; done
* 0 8
> extended 2 env 2: 04 00 h0 03 "/f%"
< extended r2 env 0: @4 w600 w424 @20 30*424
*
$ test $(OPEN_FILES) = 8
# The oldest had to make room; the others are read to their ends though they are gone
$ rm efs/0/f?
> extended 2 env 2: 04 00 h0 03 "/f0" @116 w424
< extended r2 env 0: @16 w-2 @444
* 1 7
> extended 2 env 2: 04 00 h0 03 "/f%" @116 w424
< extended r2 env 0: @4 w600 w176 @20 30*175 3% @444
*
$ test $(OPEN_FILES) = 1
1x
$ test $(OPEN_FILES) = 0
# Of all clients 32
$ for i in 0 1 2 3 4 5 6 7 8; do printf "%0600d" $i > efs/0/f$i; done
* 0 6
2> extended 2 env 2: 04 00 h0 03 "/f%"
2< extended r2 env 0: @4 w600 w424 @20 30*424
3> extended 2 env 2: 04 00 h0 03 "/f%"
3< extended r2 env 0: @4 w600 w424 @20 30*424
4> extended 2 env 2: 04 00 h0 03 "/f%"
4< extended r2 env 0: @4 w600 w424 @20 30*424
5> extended 2 env 2: 04 00 h0 03 "/f%"
5< extended r2 env 0: @4 w600 w424 @20 30*424
6> extended 2 env 2: 04 00 h0 03 "/f%"
6< extended r2 env 0: @4 w600 w424 @20 30*424
*
$ test $(OPEN_FILES) = 32
