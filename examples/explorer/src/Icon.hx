import flash.display.CapsStyle;
import flash.display.Graphics;
import flash.display.JointStyle;
import flash.display.LineScaleMode;
import flash.display.Shape;

/** Line icons on a grid of 16 by 16, drawn in one colour. **/
enum abstract Glyph(String) {
  var Up;
  var Refresh;
  var Home;
  var Desktop;
  var Clock;
  var Server;
  var Key;
  var Screen;
  var FolderPlus;
  var FilePlus;
  var Pencil;
  var Copies;
  var Bin;
  var Chevron;
}

class Icon extends Shape {
  public function new(glyph:Glyph, colour:Int, x:Float, y:Float) {
    super();
    this.x = x;
    this.y = y;
    draw(glyph, colour);
  }

  public function draw(glyph:Glyph, colour:Int):Void {
    var g = graphics;
    g.clear();
    g.lineStyle(1.5, colour, 1, false, LineScaleMode.NORMAL, CapsStyle.ROUND, JointStyle.ROUND);
    switch (glyph) {
      case Up:
        path(g, [8, 13, 8, 3]);
        path(g, [4, 7, 8, 3, 12, 7]);
      case Refresh:
        arc(g, 8, 8, 5, -0.5, 4.6);
        path(g, [12.6, 2.4, 12.4, 5.8, 9.2, 5.2]);
      case Home:
        path(g, [2, 8, 8, 2.5, 14, 8]);
        path(g, [4, 7, 4, 13.5, 12, 13.5, 12, 7]);
      case Desktop:
        g.drawRoundRect(1.5, 2.5, 13, 8.5, 2);
        path(g, [8, 11, 8, 13.5]);
        path(g, [5, 13.5, 11, 13.5]);
      case Clock:
        g.drawCircle(8, 8, 6);
        path(g, [8, 4.5, 8, 8, 10.5, 9.5]);
      case Server:
        g.drawRoundRect(2, 2.5, 12, 5, 2);
        g.drawRoundRect(2, 8.5, 12, 5, 2);
        path(g, [4.5, 5, 5, 5]);
        path(g, [4.5, 11, 5, 11]);
      case Key:
        g.drawCircle(5, 11, 3);
        path(g, [7.2, 8.8, 13.5, 2.5]);
        path(g, [11, 5, 13, 7]);
      case Screen:
        g.drawRoundRect(1.5, 2, 13, 12, 2);
        g.drawRect(4.5, 7, 5, 4);
        path(g, [1.5, 4.5, 14.5, 4.5]);
      case FolderPlus:
        path(g, [1.5, 13, 1.5, 3, 6, 3, 7.5, 5, 14.5, 5, 14.5, 13, 1.5, 13]);
        plus(g, 8, 9, 2);
      case FilePlus:
        path(g, [3, 1.5, 9.5, 1.5, 13, 5, 13, 14.5, 3, 14.5, 3, 1.5]);
        plus(g, 8, 9, 2);
      case Pencil:
        path(g, [2.5, 13.5, 3.2, 10.3, 11, 2.5, 13.5, 5, 5.7, 12.8, 2.5, 13.5]);
        path(g, [9.3, 4.2, 11.8, 6.7]);
      case Copies:
        g.drawRoundRect(5.5, 5.5, 8.5, 8.5, 2);
        path(g, [3.5, 10.5, 2, 10.5, 2, 2, 10.5, 2, 10.5, 3.5]);
      case Bin:
        path(g, [2.5, 4, 13.5, 4]);
        path(g, [6, 4, 6, 2, 10, 2, 10, 4]);
        path(g, [4, 4, 4.7, 14, 11.3, 14, 12, 4]);
        path(g, [6.7, 7, 6.9, 11]);
        path(g, [9.3, 7, 9.1, 11]);
      case Chevron:
        path(g, [6, 4, 10, 8, 6, 12]);
    }
  }

  static function path(g:Graphics, points:Array<Float>):Void {
    g.moveTo(points[0], points[1]);
    for (i in 1...points.length >> 1)
      g.lineTo(points[2 * i], points[2 * i + 1]);
  }

  static function plus(g:Graphics, x:Float, y:Float, arm:Float):Void {
    path(g, [x - arm, y, x + arm, y]);
    path(g, [x, y - arm, x, y + arm]);
  }

  static function arc(g:Graphics, x:Float, y:Float, radius:Float, from:Float, sweep:Float):Void {
    g.moveTo(x + radius * Math.cos(from), y + radius * Math.sin(from));
    for (step in 1...25) {
      var angle = from + sweep * step / 24;
      g.lineTo(x + radius * Math.cos(angle), y + radius * Math.sin(angle));
    }
  }
}
