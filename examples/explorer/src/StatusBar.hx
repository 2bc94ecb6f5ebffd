import flash.display.Sprite;
import flash.text.TextField;

/** The line at the bottom: what happened last. **/
class StatusBar extends Sprite {
  public static inline final HEIGHT = 28;

  final line:TextField;
  var barWidth = 0.0;
  var whole = "";

  public function new() {
    super();
    name = "status";
    line = Theme.label("", 12, Theme.MUTED, 18, 5);
    addChild(line);
  }

  public function place(x:Float, y:Float, width:Float):Void {
    this.x = x;
    this.y = y;
    barWidth = width;
    graphics.clear();
    graphics.beginFill(Theme.LINE);
    graphics.drawRect(0, 0, barWidth, 1);
    graphics.endFill();
    Theme.fit(line, whole, barWidth - 36);
  }

  public function text():String {
    return whole;
  }

  public function show(text:String, isError:Bool):Void {
    whole = text;
    Theme.fit(line, text, barWidth - 36);
    line.textColor = isError ? Theme.DANGER : Theme.MUTED;
  }
}
