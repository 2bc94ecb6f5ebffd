package corvane;

/** Why a command has no result. **/
class Failure {
  /** The server answered FAILED. Its reason is in the server's log only. **/
  public static inline final REFUSED = "refused";

  /** A parameter holds something that a request cannot carry; nothing was sent. **/
  public static inline final UNSENDABLE = "unsendable";

  /** No connection, or it ended before the reply: the command may have been carried out. **/
  public static inline final DISCONNECTED = "disconnected";

  /** No reply in time: the command may still be carried out. **/
  public static inline final TIMED_OUT = "timedOut";

  /** The reply was not one that the server writes, or belonged to another command. **/
  public static inline final MALFORMED = "malformed";

  /** One of the constants above. **/
  public final kind:String;

  /** The command's name. **/
  public final action:String;

  /** The system's error number; 0 when the reply has none (only `write` gives one). **/
  public final errno:Int;

  /** What the reply says about the object of the command; empty when it says nothing. **/
  public final hint:String;

  public function new(kind:String, action:String, errno:Int = 0, hint:String = "") {
    this.kind = kind;
    this.action = action;
    this.errno = errno;
    this.hint = hint;
  }

  public function toString():String {
    return action + ": " + kind + (errno == 0 ? "" : ", error " + errno) + (hint == "" ? "" : ", " + hint);
  }
}
