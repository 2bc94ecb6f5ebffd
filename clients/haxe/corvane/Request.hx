package corvane;

/** A request that waits for its turn or for its reply. **/
class Request {
  public final action:String;

  /** All of the request but the terminator, which the socket adds. **/
  public final text:String;

  /** True for `shutdown`, whose success is the end of the connection instead of a reply. **/
  public final endsServer:Bool;

  /** Called exactly once: with the reply, or with null and the failure; with null twice for the end of a server. **/
  public final done:(Null<Reply>, Null<Failure>) -> Void;

  public function new(action:String, text:String, endsServer:Bool, done:(Null<Reply>, Null<Failure>) -> Void) {
    this.action = action;
    this.text = text;
    this.endsServer = endsServer;
    this.done = done;
  }
}
