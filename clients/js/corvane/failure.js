/** Why a command has no result; what the promise of a command is rejected with. */
export class Failure extends Error {
  /** The server answered FAILED. Its reason is in the server's log only. */
  static REFUSED = "refused";

  /** A parameter is something that a request cannot carry; nothing was sent. */
  static UNSENDABLE = "unsendable";

  /** No connection, or it ended before the reply: the command may have been carried out. */
  static DISCONNECTED = "disconnected";

  /** No reply in time: the command may still be carried out. */
  static TIMED_OUT = "timedOut";

  /** The reply was not one that the server writes, or belonged to another command. */
  static MALFORMED = "malformed";

  constructor(kind, action, errno = 0, hint = "") {
    super(action + ": " + kind + (errno === 0 ? "" : ", error " + errno) + (hint === "" ? "" : ", " + hint));
    this.name = "Failure";
    this.kind = kind;
    this.action = action;
    this.errno = errno;
    this.hint = hint;
  }
}
