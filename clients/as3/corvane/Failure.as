package corvane {
  /** Why a command has no result. */
  public class Failure {
    /** The server answered FAILED. Its reason is in the server's log only. */
    public static const REFUSED:String = "refused";

    /** A parameter holds something that a request cannot carry; nothing was sent. */
    public static const UNSENDABLE:String = "unsendable";

    /** No connection, or it ended before the reply: the command may have been carried out. */
    public static const DISCONNECTED:String = "disconnected";

    /** No reply in time: the command may still be carried out. */
    public static const TIMED_OUT:String = "timedOut";

    /** The reply was not one that the server writes, or belonged to another command. */
    public static const MALFORMED:String = "malformed";

    /** One of the constants above. */
    public var kind:String;

    /** The command's name. */
    public var action:String;

    /** The system's error number; 0 when the reply has none (only "write" gives one). */
    public var errno:int;

    /** What the reply says about the object of the command; empty when it says nothing. */
    public var hint:String;

    public function Failure(kind:String, action:String, errno:int = 0, hint:String = "") {
      this.kind = kind;
      this.action = action;
      this.errno = errno;
      this.hint = hint;
    }

    public function toString():String {
      return action + ": " + kind + (errno == 0 ? "" : ", error " + errno) + (hint == "" ? "" : ", " + hint);
    }
  }
}
