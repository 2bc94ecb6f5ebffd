package corvane;

import flash.events.TimerEvent;
import flash.utils.Timer;

/** Rings once after a time, unless it is stopped or started again before. **/
class Clock {
  final ring:() -> Void;
  var timer:Null<Timer> = null;

  public function new(ring:() -> Void) {
    this.ring = ring;
  }

  public function start(milliseconds:Int):Void {
    stop();
    timer = new Timer(milliseconds, 1);
    timer.addEventListener(TimerEvent.TIMER, onTimer);
    timer.start();
  }

  public function stop():Void {
    if (timer == null)
      return;
    timer.removeEventListener(TimerEvent.TIMER, onTimer);
    timer.stop();
    timer = null;
  }

  function onTimer(event:TimerEvent):Void {
    stop();
    ring();
  }
}
