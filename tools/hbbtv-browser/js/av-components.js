// The AV components that video/broadcast and the A/V control object list: the
// COMPONENT_TYPE_ constants, AVComponent values with the members of their kind, and the
// collections pages get (tv.components).
(function (tv) {
    'use strict';
    var TYPES = { COMPONENT_TYPE_VIDEO: 0, COMPONENT_TYPE_AUDIO: 1, COMPONENT_TYPE_SUBTITLE: 2 };
    var COMMON = ['componentTag', 'pid', 'type', 'encoding', 'encrypted'];
    var OF_KIND = [['aspectRatio'], ['language', 'audioDescription', 'audioChannels'], ['language', 'hearingImpaired']];

    // Which component of the TV's list a page's AVComponent is: its key (a broadcast's PID, a
    // media track's place), kept out of the page's sight.
    var keys = new WeakMap();

    function AVComponent(data) {
        COMMON.concat(OF_KIND[data.type] || []).forEach(function (name) {
            Object.defineProperty(this, name, { value: data[name] === undefined ? null : data[name], enumerable: true });
        }, this);
        keys.set(this, data.key);
    }

    // undefined and null ask for every kind.
    function ofType(componentType) {
        if (componentType === undefined || componentType === null)
            return function () { return true; };
        var type = Number(componentType);
        return function (data) { return data.type === type; };
    }

    tv.components = {
        define: function (objectType) {
            Object.keys(TYPES).forEach(function (name) {
                tv.property(objectType, name, function () { return TYPES[name]; });
            });
        },
        // The collection of the components (plain data, each with its key) of the type asked for.
        collection: function (components, componentType) {
            return tv.collection(components.filter(ofType(componentType)).map(function (data) {
                return new AVComponent(data);
            }));
        },
        // What selectComponent and unselectComponent name: an AVComponent, or a component type
        // (its first component, or its active one).
        named: function (component, components, active) {
            if (typeof component === 'number')
                return components.filter(ofType(component)).filter(function (data) {
                    return !active || data.active;
                })[0] || null;
            if (!component || typeof component !== 'object')
                throw new TypeError('an AVComponent or a component type');
            var key = keys.get(component);
            return components.filter(function (data) {
                return key !== undefined ? data.key === key : data.pid === component.pid && data.type === component.type;
            })[0] || null;
        }
    };
})
