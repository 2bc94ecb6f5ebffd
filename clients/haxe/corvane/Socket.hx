package corvane;

import flash.errors.SecurityError;
import flash.events.DataEvent;
import flash.events.Event;
import flash.events.IOErrorEvent;
import flash.events.SecurityErrorEvent;
import flash.net.XMLSocket;

/**
  A connection that can be opened again. Each opening has an XMLSocket of its own, so that late
  events of an old connection are never taken for events of the new one.
**/
class Socket {
  public var opened:() -> Void = () -> {};
  public var received:(text:String) -> Void = text -> {};

  /** The other side or an error ended the connection, or it could not be made. **/
  public var lost:() -> Void = () -> {};

  var socket:Null<XMLSocket> = null;

  public function new() {}

  public function open(host:String, port:Int):Void {
    close();
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

  public function isOpen():Bool {
    return socket != null && socket.connected;
  }

  public function send(text:String):Void {
    socket.send(text);
  }

  /** Calls nothing back. **/
  public function close():Void {
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

  function onConnect(event:Event):Void {
    opened();
  }

  function onData(event:DataEvent):Void {
    received(event.data);
  }

  function onLost(event:Null<Event>):Void {
    close();
    lost();
  }
}
