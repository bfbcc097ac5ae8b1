# What people and accidents put into the state directory: one complaint for each trouble, and -5 to the client.

## A folder is read as an item, or replaced by one
$ mkdir nv/0/5
> extended 2 env 2: 01 00 h5
< extended r2 env 0: @16 w-5 @444
> extended 2 env 2: 01 00 h5
< extended r2 env 0: @16 w-5 @444
> extended 2 env 2: 02 00 h5 @108 w3 @120 A1B2C3
< extended r2 env 0: @16 w-5 @444
> extended 2 env 2: 03 00 h5
< extended r2 env 0: @16 w-5 @444
! STATE/nv/0/5: Is a directory

## Pipes are waited for, or a name's control bytes reach the terminal
$ mkfifo nv/0/5 && mkfifo efs/0/"$(printf '\033[1m')"
> extended 2 env 2: 01 00 h5
< extended r2 env 0: @16 w-5 @444
> extended 2 env 2: 04 00 h0 06 "/" 1B "[1m"
< extended r2 env 0: @16 w-5 @444
! STATE/nv/0/5: expected a regular file
! STATE/efs/0/\x1B[1m: expected a regular file

## A file in the place of a tree, or of the temporaries, is gone through
$ rm -r efs/0 tmp && touch efs/0 tmp
> extended 2 env 2: 04 00 h0 04 "/any"
< extended r2 env 0: @16 w-5 @444
> extended 2 env 2: 02 00 h5 @108 w3 @120 A1B2C3
< extended r2 env 0: @16 w-5 @444
! STATE/efs/0: Not a directory
! STATE/tmp: Not a directory

## An item of a terabyte is read into memory
$ truncate -s 1T nv/0/550
> extended 2 env 2: 01 00 h550
< extended r2 env 0: @16 w-5 @444
! STATE/nv/0/550: File too large

## A modem whose state is taken away makes it anew, or dies
$ rm -r "$PWD"
> extended 2 env 2: 01 00 h550
< extended r2 env 0: @16 w-5 @444
> extended 2 env 2: 02 00 h550 @108 w3 @120 A1B2C3
< extended r2 env 0: @16 w-5 @444
> extended 2 env 0: A1
< extended r2 env 0: A1
! STATE: No such file or directory

## A scenario's content goes into a state that isn't fresh, or the built-in content is gone
[nv]
"0/550" = "08 3a	FF"
"1/1" = ""
[efs]
"1:/deep/er" = { fill = 0xAB, size = 500 }
[sar]
dsi = 4
[[card]]
state = "error"
= nv/0/550 083AFF
= nv/1/1
= efs/1/deep/er AB*500
= nv/0/10 001E00
= sar/dsi 04000000
= card/1/state "error"
= card/2/state none
$ rm -r efs
---
[nv]
"0/550" = "A1"
[sar]
dsi = 5
= nv/0/550 083AFF
= sar/dsi 04000000
= efs none

# ---- Starts: the built-in phone stands for what is built, and an item that is gone for a client's deletion ----

## An empty volume isn't filled, or another folder takes its place
$ rm -r * && mkdir lost+found && stat -c %i . > ../number
---
$ test "$(stat -c %i .)" = "$(cat ../number)" && ! test -e .new && rmdir tmp lost+found
= nv/0/10 001E00

## A start that was killed at its beginning, or while it filled, isn't made good
$ rm -r * && mkdir .new
---
$ ! test -e .new && rmdir tmp && rm -r *
= nv/0/10 none
$ content=.new/$(sh -c 'echo $$')-1/content/nv/0 && mkdir -p $content && echo half > $content/10
---
= nv/0/10 001E00
$ ! test -e .new && rmdir tmp && rm -r *
# With the numbers of this process
$ for i in $(seq 99); do mkdir -p .new/$PPID-$i; done
---
= nv/0/10 001E00
$ ! test -e .new && rmdir tmp

## A start that was killed while it moved isn't made good, or brings back what is gone
$ mkdir -p .new/whole/content && mv efs .new/whole/content && rm nv/0/10
---
$ test -e efs/0/policyman && ! test -e .new && rmdir tmp
= nv/0/10 none
# When it had moved all
$ mkdir -p tmp .new/whole/content
---
$ ! test -e .new && rmdir tmp
= nv/0/10 none

## What killed processes have left stays, or what they haven't goes
# No process ever has that number; one that has ended may see its own given again.
$ dead=4194304 && mkdir -p tmp/$dead-2/whole && touch tmp/$dead-1 tmp/$dead-2/whole/file tmp/notes tmp/$dead-01-31 tmp/$PPID-0 tmp/1-1
---
$ rm tmp/notes tmp/*-01-31 tmp/$PPID-0 tmp/1-1
# In a container each start may have the same number
$ sh -c 'touch tmp/$$-1 && mkdir ../home && ln -s "$PWD" ../home/modem && exec "$RBK" 4 1 0 10' > ../out
$ rmdir tmp

## What lies behind a person's link is cleared, moved or filled
$ mkdir -p ../elsewhere/whole/content/nv/0 && touch ../elsewhere/$(sh -c 'echo $$')-1 ../elsewhere/whole/content/nv/0/551
$ rm -r tmp && ln -s ../elsewhere tmp
---
> extended 2 env 2: 01 00 h550
< extended r2 env 0: @16 w-5 @444
! STATE/tmp: Not a directory
$ rm tmp && ln -s ../elsewhere .new
---
> extended 2 env 2: 02 00 h550 @108 w1 @120 A1
< extended r2 env 0: @16 w-5 @444
! STATE/.new: Not a directory
$ rm -r * && ls ../elsewhere/*-1 > /dev/null && rm ../elsewhere/whole/content/nv/0/551
---
> extended 2 env 2: 05 00 h255 02 "/f" @108 w1 w1 @120 A1
< extended r2 env 0: @16 w-5 @444
! STATE/.new: Not a directory
$ ls ../elsewhere/*-1 > /dev/null && rmdir ../elsewhere/whole/content/nv/0

## A file in the place of the directory is written to
$ rm -r "$PWD" && echo x > "$PWD"
---
> extended 2 env 2: 01 00 h550
< extended r2 env 0: @16 w-5 @444
> extended 2 env 0: A1
< extended r2 env 0: A1
! STATE: Not a directory
