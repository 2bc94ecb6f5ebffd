import flash.display.DisplayObject;
import flash.display.DisplayObjectContainer;
import flash.display.Stage;
import flash.external.ExternalInterface;
import flash.text.TextField;

/** Lets the page around the movie find controls by name, so that a test can click on them. **/
class Automation {
  /** `state` gives an object that describes what is shown. **/
  public static function offer(stage:Stage, state:() -> Dynamic):Void {
    if (!ExternalInterface.available)
      return;
    ExternalInterface.addCallback("whereIs", name -> whereIs(stage, name));
    ExternalInterface.addCallback("textOf", name -> textOf(stage, name));
    ExternalInterface.addCallback("state", state);
  }

  /** The middle of the control in stage coordinates, or null. **/
  static function whereIs(stage:Stage, name:String):Null<Array<Float>> {
    var found = find(stage, name);
    if (found == null)
      return null;
    var bounds = found.getBounds(stage);
    return [bounds.x + bounds.width / 2, bounds.y + bounds.height / 2];
  }

  static function textOf(stage:Stage, name:String):Null<String> {
    var field = Std.downcast(find(stage, name), TextField);
    return field == null ? null : field.text;
  }

  /** The topmost visible object of that name. **/
  static function find(container:DisplayObjectContainer, name:String):Null<DisplayObject> {
    var index = container.numChildren;
    while (--index >= 0) {
      var child = container.getChildAt(index);
      if (!child.visible)
        continue;
      if (child.name == name)
        return child;
      var inner = Std.downcast(child, DisplayObjectContainer);
      var found = inner == null ? null : find(inner, name);
      if (found != null)
        return found;
    }
    return null;
  }
}
