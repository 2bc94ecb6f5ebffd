package corvane {
  /** A request that waits for its turn or for its reply. */
  public class Request {
    public var action:String;

    /** All of the request but the terminator, which the socket adds. */
    public var text:String;

    /** True for "shutdown", whose success is the end of the connection instead of a reply. */
    public var endsServer:Boolean;

    /**
     * function(reply:Reply, failure:Failure):void, called exactly once: with the reply and null, or
     * with null and the failure; with null twice for the end of a server.
     */
    public var done:Function;

    public function Request(action:String, text:String, endsServer:Boolean, done:Function) {
      this.action = action;
      this.text = text;
      this.endsServer = endsServer;
      this.done = done;
    }
  }
}
