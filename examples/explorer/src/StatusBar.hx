import flash.display.Sprite;
import flash.text.TextField;

/** The line at the bottom: what happened last. **/
class StatusBar extends Sprite {
  public static inline final HEIGHT = 28;

  final barWidth:Float;
  final line:TextField;

  public function new(x:Float, y:Float, width:Float) {
    super();
    this.x = x;
    this.y = y;
    barWidth = width;
    line = Theme.label("", 12, Theme.MUTED, 18, 5);
    addChild(line);
    show("", false);
  }

  public function text():String {
    return line.text;
  }

  public function show(text:String, isError:Bool):Void {
    Theme.fit(line, text, barWidth - 36);
    line.textColor = isError ? Theme.DANGER : Theme.MUTED;
    graphics.clear();
    graphics.beginFill(Theme.LINE);
    graphics.drawRect(0, 0, barWidth, 1);
    graphics.endFill();
  }
}
