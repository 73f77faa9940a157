// The AV components that video/broadcast and the A/V control object list: the
// COMPONENT_TYPE_ constants, AVComponent values with the members of their kind, and the
// collections pages get (tv.components).
(function (tv) {
    'use strict';
    var TYPES = { COMPONENT_TYPE_VIDEO: 0, COMPONENT_TYPE_AUDIO: 1, COMPONENT_TYPE_SUBTITLE: 2 };
    var COMMON = ['componentTag', 'pid', 'type', 'encoding', 'encrypted'];
    var OF_KIND = [['aspectRatio'], ['language', 'audioDescription', 'audioChannels'], ['language', 'hearingImpaired']];

    function AVComponent(data) {
        COMMON.concat(OF_KIND[data.type] || []).forEach(function (name) {
            Object.defineProperty(this, name, { value: data[name] === undefined ? null : data[name], enumerable: true });
        }, this);
    }

    function AVComponentCollection(components) {
        Object.defineProperty(this, 'length', { value: components.length });
        this.item = function (index) { return components[index] || null; };
        for (var i = 0; i < components.length; ++i)
            Object.defineProperty(this, i, { value: components[i], enumerable: true });
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
        // The collection of the components (plain data) of the type asked for.
        collection: function (components, componentType) {
            return new AVComponentCollection(components.filter(ofType(componentType)).map(function (data) {
                return new AVComponent(data);
            }));
        },
        // What selectComponent and unselectComponent name: an AVComponent, or a component type.
        named: function (component, components) {
            if (typeof component === 'number')
                return components.filter(ofType(component))[0] || null;
            if (!component || typeof component !== 'object')
                throw new TypeError('an AVComponent or a component type');
            return components.filter(function (data) {
                return data.pid === component.pid && data.type === component.type &&
                    (data.language || null) === (component.language || null);
            })[0] || null;
        }
    };
})
