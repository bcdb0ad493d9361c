// Watches over the end of a run that a signal began: the interrupted code may hold a lock that the
// end needs, above all the allocator's, and would then wait for itself for good.
#ifndef ZOR_RUN_END_WATCH_H
#define ZOR_RUN_END_WATCH_H

namespace zor {

// Makes this thread the one whose signal ends the run. From here on the process dies by the signal
// once this thread waited for one lock too long.
void startEndWatch(int signo);

// Holds a second thread back while another one's signal ends the run, a minute at most.
void waitForOtherEnd();

// The end is over, and the process goes on.
void stopEndWatch();

} // namespace zor

#endif
