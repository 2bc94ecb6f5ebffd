package corvane;

/**
  Sends requests one at a time, in the order in which they came, and matches replies to them.

  It connects when there is something to send and connects again after the connection was lost. A
  request is never sent twice: the server may have carried it out before the connection ended.
**/
class Connection {
  final host:String;
  final port:Int;
  final socket = new Socket();
  final clock:Clock;
  final waiting:Array<Request> = [];

  /** The request under way; it is not in `waiting` any more. **/
  var current:Null<Request> = null;

  /** Whether `current` has left; before that the connection is being made. **/
  var sent = false;

  /** Milliseconds for connecting and for each reply. **/
  public var timeout = 10000;

  public function new(host:String, port:Int) {
    this.host = host;
    this.port = port;
    clock = new Clock(onTimeout);
    socket.opened = transmit;
    socket.received = onReceived;
    socket.lost = onLost;
  }

  public function send(request:Request):Void {
    waiting.push(request);
    proceed();
  }

  /** Ends the connection; what has not been answered fails as disconnected. **/
  public function close():Void {
    socket.close();
    failAll(Failure.DISCONNECTED);
  }

  function proceed():Void {
    if (current != null || waiting.length == 0)
      return;
    current = waiting.shift();
    sent = false;
    clock.start(timeout);
    if (socket.isOpen())
      transmit();
    else
      socket.open(host, port);
  }

  function transmit():Void {
    sent = true;
    socket.send(current.text);
  }

  function onReceived(text:String):Void {
    var reply = ReplyReader.parse(text);
    if (current != null && reply != null && reply.action == current.action) {
      finish(reply, null);
      return;
    }
    // Out of step: any later reply might be taken for the answer to another request.
    socket.close();
    if (current != null)
      finish(null, new Failure(Failure.MALFORMED, current.action));
  }

  function onLost():Void {
    if (current == null)
      return;
    if (current.endsServer && sent)
      finish(null, null);
    else
      finish(null, new Failure(Failure.DISCONNECTED, current.action));
  }

  function onTimeout():Void {
    // A reply that comes after all must not be taken for the answer to the next request.
    socket.close();
    finish(null, new Failure(Failure.TIMED_OUT, current.action));
  }

  /** Starts the next request first, so that a callback that throws cannot stop the queue. **/
  function finish(reply:Null<Reply>, failure:Null<Failure>):Void {
    clock.stop();
    var finished = current;
    current = null;
    proceed();
    finished.done(reply, failure);
  }

  function failAll(kind:String):Void {
    clock.stop();
    var unanswered = current == null ? waiting.copy() : [current].concat(waiting);
    current = null;
    waiting.resize(0);
    for (request in unanswered)
      request.done(null, new Failure(kind, request.action));
  }
}
