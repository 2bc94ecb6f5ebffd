package corvane;

/** Stands in for the library's socket: the test plays the server. **/
class Socket {
  /** The one the client under test made last. **/
  public static var last:Socket;

  public var opened:() -> Void = () -> {};
  public var received:(text:String) -> Void = text -> {};
  public var lost:() -> Void = () -> {};

  public final sent:Array<String> = [];
  public var openings = 0;

  var connected = false;

  public function new() {
    last = this;
  }

  public function open(host:String, port:Int):Void {
    openings++;
  }

  public function isOpen():Bool {
    return connected;
  }

  public function send(text:String):Void {
    sent.push(text);
  }

  public function close():Void {
    connected = false;
  }

  public function accept():Void {
    connected = true;
    opened();
  }

  public function drop():Void {
    connected = false;
    lost();
  }
}
