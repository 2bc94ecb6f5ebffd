"""Which calls are made to fail, with which error numbers, and what is allowed to come of it."""

import errno
from dataclasses import dataclass

from scripted_requests import CLOSED, SUCCESS

HALF = 0  # the call succeeds, but does only half of what it was asked


@dataclass(frozen=True)
class Fault:
    call: str
    error: int

    def __str__(self):
        return f"{self.call} {'half done' if self.error == HALF else errno.errorcode[self.error]}"

    @property
    def must_not_be_noticed(self):
        """Interruptions and short counts are no failures, and without epoll the server waits with
        pselect: every request has to succeed."""
        return self.error in (HALF, errno.EINTR) or self.is_of_the_queue

    @property
    def is_of_the_queue(self):
        return self.call.startswith("epoll_")

    @property
    def must_fail_a_request(self):
        """The end of a file tells of what could not be stored, and a move waits for the disk: no
        success may hide it."""
        return self.call in ("close_written", "fsync")

    def may_shorten(self, request):
        """A directory that cannot be read to its end is listed as far as it can."""
        return self.call == "readdir" and str(request).startswith("listDir")

    @property
    def log_text(self):
        """What the log has to say in one of the runs at least; empty for nothing certain."""
        return LOG_TEXTS.get(self.call, "").format(self.error)

    def believed(self, outcome):
        """How the work of a request ended. A reply that could not be sent tells nothing."""
        return CLOSED if self.call in ("send", "sendmsg") and outcome != SUCCESS else outcome

    @property
    def may_end_server(self):
        """Without memory, and when it cannot wait any more, the server ends in an orderly way."""
        return self.call in ("malloc", "realloc", "pselect")

    @property
    def may_abort_server(self):
        """log4cpp's functions must not throw, so that one that lacks memory ends the process."""
        return self.call == "malloc"


# The quick run takes the first error of each call, and an interruption of those that move data.
ERRORS = {
    "accept4": [errno.EMFILE, errno.ECONNABORTED, errno.EINTR],
    "close": [errno.EIO],
    "close_written": [errno.EDQUOT],
    "copy_file_range": [errno.ENOSPC, errno.EXDEV, HALF],
    "epoll_ctl": [errno.ENOSPC, errno.ENOMEM],
    "epoll_wait": [errno.ENOMEM, errno.EINTR],
    "fcntl": [errno.EMFILE],
    "fdopendir": [errno.ENOMEM],
    "fork": [errno.EAGAIN],
    "fsync": [errno.EIO],
    "malloc": [errno.ENOMEM],
    "mkdirat": [errno.ENOSPC],
    "open": [errno.EMFILE, errno.EACCES],
    "openat": [errno.EMFILE, errno.EACCES],
    "pipe": [errno.EMFILE],
    "pselect": [errno.ENOMEM, errno.EINTR],
    "read": [errno.EIO, errno.EINTR, HALF],
    "readdir": [errno.EIO],
    "realloc": [errno.ENOMEM],
    "recv": [errno.ECONNRESET, errno.EIO, errno.EINTR],
    "remove": [errno.EACCES],
    "rmdir": [errno.EACCES],
    "send": [errno.ECONNRESET, errno.EPIPE, errno.EINTR, HALF],
    "sendmsg": [errno.ECONNRESET, errno.EPIPE, errno.EINTR, HALF],
    "unlinkat": [errno.EACCES],
    "waitpid": [errno.ECHILD],
    "write": [errno.ENOSPC, errno.EINTR, HALF],
}


LOG_TEXTS = {
    "fork": "cmd 'getScreenRect': ERROR: 'fork() fail ({})'\n",
    "waitpid": "corvane.wndutil.execute] parent: wait fail {}\n",
}


INTERRUPTED = ("read", "recv", "send", "sendmsg", "write")


def faults(quick):
    """All faults, or those of the quick run."""

    def is_quick(call, error):
        return error == ERRORS[call][0] or (error == errno.EINTR and call in INTERRUPTED)

    return [Fault(call, error) for call, errors in ERRORS.items() for error in errors
            if not quick or is_quick(call, error)]
