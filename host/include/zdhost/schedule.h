// Hooks through which a deterministic scheduler takes control of the threads that run
// the library: every library mutex acquire, every library atomic access, every remote
// call and reply, every delivery into the library, every log line and every pause
// reaches the controller installed here. With no controller, or on a thread that it
// does not control, every hook returns at once and the operation runs as usual.
//
// Each scheduling point names the object the thread touches when it goes on, and how:
// a scheduler that knows which steps touch the same object can skip orders that differ
// only in steps that touch different ones. Shared state that a step reaches between
// points (the fakes' knobs, the service manager's table) is named with touch().
#pragma once

#include <unistd.h>

#include <functional>
#include <string>

namespace zdhost {
namespace schedule {

// Where a controlled thread stands when it reaches a scheduling point.
enum class Point {
    kLock,      // about to acquire a library mutex
    kAtomic,    // about to access a library atomic
    kCall,      // a remote call leaves for its peer (the service manager included)
    kReply,     // a remote call's reply comes back
    kDelivery,  // a call from a peer is about to enter the library
    kLog,       // the library logs a line
    kWorld,     // the world changes a party: a daemon dies or registers, a knob is turned
};

// How the step after a point, or a touch, uses its object. kNothing: the step touches
// nothing shared by itself. A read or write of a null object is a read or write of
// something unnamed, which a scheduler must take as touching everything.
enum class Access { kNothing, kRead, kWrite };

class Controller {
  public:
    virtual ~Controller() = default;
    // The running thread reached a point; another thread may run before it goes on.
    // `object` is the mutex, the atomic variable, the party called, or null.
    virtual void point(Point kind, const void* object, Access access) = 0;
    // The running thread reads or writes `object` in its current step, without a point.
    virtual void touch(const void* object, Access access) = 0;
    // Before a library mutex is really locked: returns once the scheduler has handed the
    // mutex to this thread. Never returns for a thread that waits forever.
    virtual void acquire(const void* mutex) = 0;
    // A try-lock: hands over the mutex when it is free, else answers false at once.
    virtual bool tryAcquire(const void* mutex) = 0;
    // After a library mutex was really unlocked: the threads waiting for it may run.
    virtual void release(const void* mutex) = 0;
    // The library paused: the thread sleeps in virtual time.
    virtual void pause(useconds_t micros) = 0;
    // Work the runtime would hand to a thread of its pool: it runs on a new controlled thread.
    virtual void spawn(std::function<void()> work) = 0;
};

// Installs the controller (null removes it). Threads opt in with setControlled().
void install(Controller* controller);
// Marks the calling thread as one the controller schedules (or no longer does).
void setControlled(bool controlled);
// The controller, when one is installed and the calling thread is controlled; else null.
Controller* current();

// A small tag that follows work from thread to thread: a thread posting to the runtime
// pool passes its tag to the thread that runs the work. Runners use it to tell which
// concurrent branch a line of the transcript came from. 0 on a new thread.
int threadTag();
void setThreadTag(int tag);

// Shorthands for the places that only report.
inline void reach(Point kind, const void* object, Access access) {
    if (Controller* controller = current()) controller->point(kind, object, access);
}
// What a party's operation that receives calls is named at a scheduling point: the order of
// the calls one operation of a party receives is part of what a run shows, while calls of
// different operations commute unless the party's state they reach says otherwise. The name
// comes from the operation's own name ("fusd IFusdLbs.linkToDeath"), the same in every run,
// and cannot be the address of a real object.
const void* receiver(const std::string& operation);

inline void touch(const void* object, Access access) {
    if (Controller* controller = current()) controller->touch(object, access);
}

}  // namespace schedule
}  // namespace zdhost
