#include "common/failure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

BadData cannot(const std::string& doWhat, const std::string& name) {
    return BadData("cannot " + doWhat + " " + name + ": " + std::strerror(errno));
}

void say(const std::string& text) {
    std::fprintf(stderr, "voxloc: %s\n", text.c_str());
}

int guarded(int (*command)(void* context), void* context) {
    try {
        return command(context);
    } catch (const ClosedPipe&) {
        return StatusSuccess;
    } catch (const WrongUsage& wrong) {
        say(wrong.what());
        return StatusWrongUsage;
    } catch (const std::bad_alloc&) {
        say("out of memory");
        return StatusBadData;
    } catch (const std::exception& failure) {
        say(failure.what());
        return StatusBadData;
    }
}
