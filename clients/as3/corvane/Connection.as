package corvane {
  import flash.events.DataEvent;
  import flash.events.Event;
  import flash.events.IOErrorEvent;
  import flash.events.SecurityErrorEvent;
  import flash.events.TimerEvent;
  import flash.net.XMLSocket;
  import flash.utils.Timer;

  /**
   * Sends requests one at a time, in the order in which they came, and matches replies to them.
   *
   * It connects when there is something to send and connects again after the connection was lost. A
   * request is never sent twice: the server may have carried it out before the connection ended.
   */
  public class Connection {
    /** Milliseconds for connecting and for each reply. */
    public var timeout:int = 10000;

    private var host:String;
    private var port:int;

    /** Each connection has a socket of its own, so that late events of an old one are not mistaken. */
    private var socket:XMLSocket = null;

    private var clock:Timer = null;
    private var waiting:Array = [];

    /** The request under way; it is not in "waiting" any more. */
    private var current:Request = null;

    /** Whether "current" has left; before that the connection is being made. */
    private var sent:Boolean = false;

    public function Connection(host:String, port:int) {
      this.host = host;
      this.port = port;
    }

    public function send(request:Request):void {
      waiting.push(request);
      proceed();
    }

    /** Ends the connection; what has not been answered fails as disconnected. */
    public function close():void {
      closeSocket();
      stopClock();
      var unanswered:Array = current == null ? waiting : [current].concat(waiting);
      current = null;
      waiting = [];
      for each (var request:Request in unanswered)
        request.done(null, new Failure(Failure.DISCONNECTED, request.action));
    }

    private function proceed():void {
      if (current != null || waiting.length == 0)
        return;
      current = waiting.shift() as Request;
      sent = false;
      startClock();
      if (socket != null && socket.connected)
        transmit();
      else
        openSocket();
    }

    private function transmit():void {
      sent = true;
      socket.send(current.text);
    }

    private function onConnect(event:Event):void {
      transmit();
    }

    private function onData(event:DataEvent):void {
      var reply:Reply = ReplyReader.parse(event.data);
      if (current != null && reply != null && reply.action == current.action) {
        finish(reply, null);
        return;
      }
      // Out of step: any later reply might be taken for the answer to another request.
      closeSocket();
      if (current != null)
        finish(null, new Failure(Failure.MALFORMED, current.action));
    }

    /** For the events CLOSE, IO_ERROR and SECURITY_ERROR. */
    private function onLost(event:Event):void {
      closeSocket();
      if (current == null)
        return;
      if (current.endsServer && sent)
        finish(null, null);
      else
        finish(null, new Failure(Failure.DISCONNECTED, current.action));
    }

    private function onTimeout(event:TimerEvent):void {
      // A reply that comes after all must not be taken for the answer to the next request.
      closeSocket();
      finish(null, new Failure(Failure.TIMED_OUT, current.action));
    }

    /** Starts the next request first, so that a callback that throws cannot stop the queue. */
    private function finish(reply:Reply, failure:Failure):void {
      stopClock();
      var finished:Request = current;
      current = null;
      proceed();
      finished.done(reply, failure);
    }

    private function openSocket():void {
      closeSocket();
      socket = new XMLSocket();
      socket.addEventListener(Event.CONNECT, onConnect);
      socket.addEventListener(DataEvent.DATA, onData);
      socket.addEventListener(Event.CLOSE, onLost);
      socket.addEventListener(IOErrorEvent.IO_ERROR, onLost);
      socket.addEventListener(SecurityErrorEvent.SECURITY_ERROR, onLost);
      try {
        socket.connect(host, port);
      } catch (refused:SecurityError) {
        onLost(null);
      }
    }

    private function closeSocket():void {
      if (socket == null)
        return;
      socket.removeEventListener(Event.CONNECT, onConnect);
      socket.removeEventListener(DataEvent.DATA, onData);
      socket.removeEventListener(Event.CLOSE, onLost);
      socket.removeEventListener(IOErrorEvent.IO_ERROR, onLost);
      socket.removeEventListener(SecurityErrorEvent.SECURITY_ERROR, onLost);
      if (socket.connected)
        socket.close();
      socket = null;
    }

    private function startClock():void {
      stopClock();
      clock = new Timer(timeout, 1);
      clock.addEventListener(TimerEvent.TIMER, onTimeout);
      clock.start();
    }

    private function stopClock():void {
      if (clock == null)
        return;
      clock.removeEventListener(TimerEvent.TIMER, onTimeout);
      clock.stop();
      clock = null;
    }
  }
}
