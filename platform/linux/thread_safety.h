// Which lock guards a member, said where the member is declared. For readers: libstdc++'s mutexes carry no annotations
// that a compiler could check these against.
#pragma once

#define GUARDED_BY(mutex)
#define REQUIRES(mutex)
