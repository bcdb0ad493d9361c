// Which thread ends the run, and the watch over an end that a signal began: the interrupted code
// may hold a lock that the end needs, above all the allocator's, and would then wait for itself for
// good.
#ifndef ZOR_RUN_END_WATCH_H
#define ZOR_RUN_END_WATCH_H

namespace zor {

// True while this thread ends the run.
bool endIsMine();

// Makes this thread the one that ends the run. False when another one is about it.
bool claimEnd();

// The ending thread comes to the end of the run-time itself. False when it came here before: that
// end failed.
bool beginRunTimeEnd();

// Holds this thread back while another one ends the run, a minute at most.
void waitForOtherEnd();

// From here on the process dies by the signal once this thread waited for one lock too long.
void startEndWatch(int signo);

// The end by this thread is over, and the process goes on; so does control that leaves the
// run-time.
void leaveEnd();

} // namespace zor

#endif
